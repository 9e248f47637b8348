/// Facts about the machine. Unavailable values are empty or 0; obtaining them never blocks or shows a dialog. Callable
/// from any thread.
#pragma once

#include <cstdint>
#include <string>

#include "base/lbexport.h"

namespace LbOs
{

struct SProcessor
{
    std::wstring model;                  ///< the processor's own name
    std::uint32_t logicalProcessors = 0; ///< in use by the system
    double megahertz = 0.0;              ///< nominal clock; the current clock if the system knows only that
};

LB_API SProcessor QueryProcessor();

/// Total memory of the system in bytes.
LB_API std::uint64_t GetPhysicalMemory();

/// The computer's name.
LB_API std::wstring GetMachineName();

/// Description of the first graphics adapter: on Windows the product name, on Linux the driver and the PCI number.
/// Empty if there is no adapter, on Windows also if there is no display.
LB_API std::wstring GetGraphicsAdapter();

} // namespace LbOs

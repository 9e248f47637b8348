/// The machine. What cannot be had is empty or 0, and costs neither a delay nor a dialog. Any thread.
#pragma once

#include <cstdint>
#include <string>

#include "base/lbexport.h"

namespace LbOs
{

struct SProcessor
{
    std::wstring model;                  ///< as the processor calls itself
    std::uint32_t logicalProcessors = 0; ///< that the system uses
    double megahertz = 0.0;              ///< rated clock; the present one where the system knows no other
};

LB_API SProcessor QueryProcessor();

/// Bytes that the system has altogether.
LB_API std::uint64_t GetPhysicalMemory();

/// The computer's name.
LB_API std::wstring GetMachineName();

/// Description of the first graphics adapter; empty when there is none, or no display that it serves.
LB_API std::wstring GetGraphicsAdapter();

} // namespace LbOs

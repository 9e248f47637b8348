/// The kernel's description of the machine.
#pragma once

#include <string>

#include "base/lbexport.h"

namespace LbOs::Linux
{

/// Driver and device number of the first graphics card that has a driver; empty if there is none. `folder` is the
/// kernel's folder or one with the same structure. Any thread.
LB_API std::wstring DescribeGraphics(const std::wstring& folder);

} // namespace LbOs::Linux

/// The kernel's description of the machine.
#pragma once

#include <string>

#include "base/lbexport.h"

namespace LbOs::Linux
{

/// Driver and number of the first graphics card, by the cards' numbers, that has a driver; empty when there is none.
/// `folder` is that of the kernel, or one like it. Any thread.
LB_API std::wstring DescribeGraphics(const std::wstring& folder);

} // namespace LbOs::Linux

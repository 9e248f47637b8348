/// The user's desktop.
#pragma once

#include <string>

#include "base/lbexport.h"

namespace LbOs
{

/// Hands a file to the program that the desktop keeps for its kind. Neither waits for that program nor tells whether
/// there is one: without a desktop nothing happens. Any thread.
LB_API void OpenOnDesktop(const std::wstring& path);

} // namespace LbOs

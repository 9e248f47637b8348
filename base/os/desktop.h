/// The user's desktop.
#pragma once

#include <string>

#include "base/lbexport.h"

namespace LbOs
{

/// Opens a file with the desktop's program for its type. Does not wait for the program and does not report failure;
/// without a desktop nothing happens. Callable from any thread.
LB_API void OpenOnDesktop(const std::wstring& path);

} // namespace LbOs

/// The exception of the operations that stand in many files but in one class.
#pragma once

#include <source_location>

#include "base/lbexception.h"

namespace LuTestSuite
{

/// Throws an LbException without message that names the class's own file, "lutestsuiteutils", the operation, and the
/// caller's line.
[[noreturn]] inline void ThrowUtilsFailure(const wchar_t* function,
                                           std::source_location where = std::source_location::current())
{
    throw LbException(function, {}, L"lutestsuiteutils", where.line());
}

} // namespace LuTestSuite

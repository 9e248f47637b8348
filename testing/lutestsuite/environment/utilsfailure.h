/// The exception of the operations that stand in many files but in one class.
#pragma once

#include "base/lbexception.h"
#include "base/lbsourcelocation.h"

namespace LuTestSuite
{

/// Throws an LbException without message that names the class's own file, "lutestsuiteutils", the operation, and the
/// caller's line.
[[noreturn]] inline void ThrowUtilsFailure(const wchar_t* function,
                                           LbSourceLocation where = LbSourceLocation::Current())
{
    throw LbException(function, {}, L"lutestsuiteutils", where.GetLine());
}

} // namespace LuTestSuite

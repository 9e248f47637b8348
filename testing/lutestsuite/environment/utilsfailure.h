/// The exception that operations of LuTestSuiteUtils throw. They are defined in many files.
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

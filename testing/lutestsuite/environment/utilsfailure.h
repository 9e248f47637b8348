/// The exception that operations of LuTestSuiteUtils throw.
#pragma once

#include "base/lbexception.h"
#include "base/lbsourcelocation.h"

namespace LuTestSuite
{

/// Throws an LbException without message. It contains the operation, the caller's line, and always the file name
/// "lutestsuiteutils", although many files define the operations of the class.
[[noreturn]] inline void ThrowUtilsFailure(const wchar_t* function,
                                           LbSourceLocation where = LbSourceLocation::Current())
{
    throw LbException(function, {}, L"lutestsuiteutils", where.GetLine());
}

} // namespace LuTestSuite

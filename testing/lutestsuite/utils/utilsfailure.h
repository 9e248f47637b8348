/// The exception of the operations that stand in many files but in one class.
#pragma once

namespace LuTestSuite
{

/// Throws an LbException without message that names the class's own file, "lutestsuiteutils", and the operation.
[[noreturn]] void ThrowUtilsFailure(const wchar_t* function);

} // namespace LuTestSuite

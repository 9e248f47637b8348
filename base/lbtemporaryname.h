/// Names of temporary files, which exist only while a program writes to their folder. A killed process may leave such
/// files behind. They are never data sets.
#pragma once

#include <string>
#include <string_view>

#include "base/lbexport.h"

namespace LbTemporaryName
{

/// Wildcards: the first for the names that Make returns, the second for the files and the folder of an unfinished
/// decision of a review.
inline constexpr const wchar_t* c_Pattern = L"LuTestSuite-*.tmp";
inline constexpr const wchar_t* c_ReviewPattern = L"lutestsuite-review.pending*";

/// A new name, without a folder. Does not contain the name of the file that the temporary one will replace, because
/// both names together could exceed the length limit of the file system. Throws LbException if the system has no random
/// source. Any thread, like the function below.
LB_API std::wstring Make();

/// True for names that match one of the wildcards.
LB_API bool IsTemporary(std::wstring_view name) noexcept;

} // namespace LbTemporaryName

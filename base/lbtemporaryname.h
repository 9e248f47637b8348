/// Names of files that are in a folder only while something is written there. A killed process may leave them. They are
/// no data sets.
#pragma once

#include <string>
#include <string_view>

#include "base/lbexport.h"

namespace LbTemporaryName
{

/// Wildcards for the names that Make returns, and for the files of a decision of a review.
inline constexpr const wchar_t* c_Pattern = L"LuTestSuite-*.tmp";
inline constexpr const wchar_t* c_ReviewPattern = L"lutestsuite-review.pending*";

/// A new name, without a folder. It is short, because the name of the file that is replaced may be long. Throws
/// LbException if the system has no random source. Any thread, as the function below.
LB_API std::wstring Make();

/// True for names that match one of the wildcards.
LB_API bool IsTemporary(std::wstring_view name) noexcept;

} // namespace LbTemporaryName

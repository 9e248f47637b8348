/// Paths as text. Pure functions; nothing is looked up on the disk.
///
/// Results use the platform's separator, "\" on Windows and "/" on Linux; Windows reads "/" as one, too. A directory
/// string ends in a separator.
#pragma once

#include <string>
#include <string_view>

#include "base/lbexport.h"

namespace LbPath
{

inline constexpr wchar_t c_Separator = LbOs::c_PathSeparator;

LB_API bool IsSeparator(wchar_t character) noexcept;

/// The path with a separator at its end; an empty path stays empty.
LB_API std::wstring WithSeparator(std::wstring_view path);

/// The path without one separator at its end.
LB_API std::wstring WithoutSeparator(std::wstring_view path);

/// Last component, a separator at the end ignored: "a" of "x/a" and of "x/a/".
LB_API std::wstring GetLastComponent(std::wstring_view path);

/// All before the last component, with its separator: "x/" of "x/a" and of "x/a/"; empty when there is only one
/// component.
LB_API std::wstring GetParent(std::wstring_view path);

/// The text with each "/" and "\" turned into the platform's separator, for relative paths from texts that serve both
/// platforms.
LB_API std::wstring ToNative(std::wstring_view path);

/// True when the path does not depend on the working directory.
LB_API bool IsAbsolute(std::wstring_view path) noexcept;

/// A name that every file system takes: each of \ / : * ? " < > | and each control character becomes "_".
LB_API std::wstring ToSafeName(std::wstring_view name);

} // namespace LbPath

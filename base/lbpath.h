/// Paths as text. Pure functions that never access the disk.
///
/// Results use the platform's separator, "\" on Windows and "/" on Linux; Windows also accepts "/". By convention, the
/// path of a directory ends with a separator.
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

/// The path without one trailing separator.
LB_API std::wstring WithoutSeparator(std::wstring_view path);

/// The last component, ignoring a trailing separator: "a" of "x/a" and of "x/a/".
LB_API std::wstring GetLastComponent(std::wstring_view path);

/// The path before the last component, with separator: "x/" of "x/a" and of "x/a/"; empty if there is only one
/// component.
LB_API std::wstring GetParent(std::wstring_view path);

/// Replaces each "/" and "\" by the platform's separator; for relative paths in texts that serve both platforms.
LB_API std::wstring ToNative(std::wstring_view path);

/// Makes a name valid on every file system: replaces each of \ / : * ? " < > | and each control character by "_".
LB_API std::wstring ToSafeName(std::wstring_view name);

} // namespace LbPath

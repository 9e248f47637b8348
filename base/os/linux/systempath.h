/// Paths as the Linux calls take them. Internal to base/os.
#pragma once

#include <string>

#include "base/lbencoding.h"

namespace LbOs::Linux
{

/// A name with a zero character inside would be cut by the system: the empty name, which nothing has, stands for it.
inline std::string ToSystemPath(const std::wstring& path)
{
    return path.find(L'\0') == std::wstring::npos ? LbEncoding::ToNative(path) : std::string();
}

} // namespace LbOs::Linux

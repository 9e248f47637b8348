/// Paths in the form of the Linux calls. Internal to base/os.
#pragma once

#include <string>

#include "base/lbencoding.h"

namespace LbOs::Linux
{

/// A path that contains a null character becomes empty, because the system would truncate it.
inline std::string ToSystemPath(const std::wstring& path)
{
    return path.find(L'\0') == std::wstring::npos ? LbEncoding::ToNative(path) : std::string();
}

} // namespace LbOs::Linux

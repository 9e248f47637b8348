/// Paths to which no report can be written.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/scopedfolder.h"

struct SUnwritablePlace
{
    std::string name;
    std::wstring path;          ///< path of the file that cannot be written
    std::shared_ptr<void> hold; ///< keeps the file unwritable; null if that is not necessary
};

/// Returns paths that end in `name` (except the full disk): a folder instead of the file, a file instead of the folder,
/// a missing folder, a name that is too long, and a path that is too long. Where supported, also a full disk, a folder
/// that accepts no files, and a file held by another program. Unless the current user may write everywhere, also a
/// read-only file and a file in a read-only folder. Valid as long as the folder and the result exist.
std::vector<SUnwritablePlace> GetUnwritablePlaces(const ScopedFolder& folder, const std::wstring& name);

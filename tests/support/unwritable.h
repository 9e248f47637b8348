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
    std::shared_ptr<void> hold; ///< keeps the file unwritable, if anything must
};

/// Paths that end in `name`, except the device: a folder instead of the file, a file instead of the folder, a missing
/// folder, a name and a path that are too long. Where supported: a full disk, a folder that accepts no files, a file
/// held by another program. Unless the current user may write everywhere: a read-only file and folder. Valid as long as
/// the folder and the result exist.
std::vector<SUnwritablePlace> GetUnwritablePlaces(const ScopedFolder& folder, const std::wstring& name);

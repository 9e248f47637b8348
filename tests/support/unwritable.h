/// Places where no report can be written.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/scopedfolder.h"

struct SUnwritablePlace
{
    std::string name;
    std::wstring path;          ///< of the file that cannot be written
    std::shared_ptr<void> hold; ///< what makes it so, if anything must
};

/// A folder in place of the file and the reverse, a folder that is missing, a name and a path that are too long; where
/// the system has them a full disk, a folder that takes no files, and a file that another program holds; a file and a
/// folder that are read-only, where that keeps the present user from writing. `name` is that of the file, at the end of
/// all paths but the device's. The places stand as long as the folder and the result.
std::vector<SUnwritablePlace> GetUnwritablePlaces(const ScopedFolder& folder, const std::wstring& name);

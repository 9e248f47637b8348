/// Places where no report can be written.
#pragma once

#include <string>
#include <vector>

#include "tests/support/scopedfolder.h"

struct SUnwritablePlace
{
    std::string name;
    std::wstring path; ///< of the file that cannot be written
};

/// A folder in place of the file, a folder that is missing, a name that is too long; where the system has them a full
/// disk and a folder that takes no files. `name` is that of the file.
std::vector<SUnwritablePlace> GetUnwritablePlaces(const ScopedFolder& folder, const std::wstring& name);

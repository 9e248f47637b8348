/// Files that are no cases because they are in a folder inside a class's folder.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuiterun.h"

namespace Runner
{

/// A class's folder that contains no file for a case, and a folder inside it that contains one. Both are paths with a
/// separator at the end.
struct SInnerFolder
{
    std::wstring classFolder;
    std::wstring inner;
};

/// Searches below a full path; finds at most one inner folder for each folder of a class. Skips the folders of
/// `selected` that have a case with a file. Asks the classes which sub-tests they would have in the inner folders.
std::vector<SInnerFolder> FindInnerFolders(const std::wstring& dataDirectory,
                                           const std::vector<LuTestSuite::SUnitTest>& selected);

} // namespace Runner

/// Path functions and the per-user folder.

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

std::wstring LuTestSuiteUtils::AddBackslash(const std::wstring& path)
{
    return !path.empty() && LbPath::IsSeparator(path.back()) ? path : path + LbPath::c_Separator;
}

std::wstring LuTestSuiteUtils::RemoveBackslash(const std::wstring& path)
{
    return !path.empty() && LbPath::IsSeparator(path.back()) ? path.substr(0, path.size() - 1) : path;
}

std::wstring LuTestSuiteUtils::GetFileNameOnly(const std::wstring& path)
{
    return LbPath::GetLastComponent(path);
}

std::wstring LuTestSuiteUtils::GetPrunedPath(const std::wstring& path)
{
    return LbPath::GetParent(path);
}

void LuTestSuiteUtils::SplitFileName(const std::wstring& path, std::wstring& folder, std::wstring& name)
{
    const std::size_t separator = path.find_last_of(LbOs::c_PathSeparators);
    const std::size_t nameStart = separator == std::wstring::npos ? 0 : separator + 1;
    // Uses copies, because `folder` or `name` may be the same object as `path`.
    const std::wstring splitFolder = path.substr(0, nameStart);
    const std::wstring splitName = path.substr(nameStart);
    folder = splitFolder;
    name = splitName;
}

bool LuTestSuiteUtils::AssertDirectory(const std::wstring& path)
{
    return LbFileSystem::AssertDirectory(path);
}

std::wstring LuTestSuiteUtils::GetLocalTestSuiteDir()
{
    std::wstring directory = LbFileSystem::GetDirectory(LbFileSystem::eDK_UserData);
    for (const wchar_t* level : {L"LuTestSuite", L"Orvell"})
    {
        directory = AddBackslash(directory + level);
        AssertDirectory(directory);
    }
    return directory;
}

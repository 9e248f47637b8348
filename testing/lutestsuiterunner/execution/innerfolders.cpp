#include "testing/lutestsuiterunner/execution/innerfolders.h"

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

#include "base/lbfilelisting.h"
#include "base/lbpath.h"
#include "base/lbrtti.h"
#include "base/luunittest.h"
#include "base/os/files.h"

namespace Runner
{

namespace
{

/// The folders in a folder, with separator at the end, ordered. Without links, which may form a circle.
std::vector<std::wstring> listFolders(const std::wstring& directory)
{
    std::vector<std::wstring> folders;
    LbOs::VisitDirectory(directory, [&](const LbOs::SDirectoryEntry& entry) {
        if (entry.isDirectory && !entry.isLink)
        {
            folders.push_back(directory + entry.name + LbPath::c_Separator);
        }
    });
    std::ranges::sort(folders);
    return folders;
}

/// Null for a folder that does not belong to a class.
const LbRTTI* findClass(const std::wstring& folder)
{
    const LbRTTI* const type = LbRTTI::Find(LbPath::GetLastComponent(folder.substr(0, folder.size() - 1)));
    return type != nullptr && type->IsDerivedFrom(LuUnitTest::RTTI) && type->GetCreate() ? type : nullptr;
}

bool hasFileCase(const LbRTTI& type, const std::wstring& folder)
try
{
    const std::unique_ptr<IObject> object = type.GetCreate()();
    auto& unitTest = dynamic_cast<LuUnitTest&>(*object);
    unitTest.SetDataDirectory(folder);
    unitTest.InitSubtests();
    const std::shared_ptr<const LbFileListing> files = unitTest.GetDataFileNames().GetListing();
    for (std::uint32_t subtest = 0; subtest < unitTest.GetSubtestCount(); ++subtest)
    {
        if (files->Find(unitTest.GetSubtestName(subtest)))
        {
            return true;
        }
    }
    return false;
}
catch (...)
{
    // The search for cases has printed a warning, or the class does not expect this folder.
    return false;
}

/// The first inner folder, at any depth, that has a file for a case.
std::wstring findInner(const LbRTTI& type, const std::wstring& classFolder)
{
    std::vector<std::wstring> pending = listFolders(classFolder);
    if (pending.empty() || hasFileCase(type, classFolder))
    {
        return {};
    }
    std::ranges::reverse(pending);
    while (!pending.empty())
    {
        const std::wstring folder = std::move(pending.back());
        pending.pop_back();
        if (LbFileListing::Get(folder)->GetCount() > 0 && hasFileCase(type, folder))
        {
            return folder;
        }
        const std::vector<std::wstring> inner = listFolders(folder);
        pending.insert(pending.end(), inner.rbegin(), inner.rend());
    }
    return {};
}

std::set<std::wstring> listFoldersWithFiles(const std::vector<LuTestSuite::SUnitTest>& unitTests)
{
    std::set<std::wstring> folders;
    for (const LuTestSuite::SUnitTest& unitTest : unitTests)
    {
        if (std::ranges::any_of(unitTest.cases, [](const auto& one) { return !one.dataSetFile.empty(); }))
        {
            folders.insert(unitTest.dataDirectory);
        }
    }
    return folders;
}

} // namespace

std::vector<SInnerFolder> FindInnerFolders(const std::wstring& dataDirectory,
                                           const std::vector<LuTestSuite::SUnitTest>& selected)
{
    const std::set<std::wstring> known = listFoldersWithFiles(selected);
    std::vector<SInnerFolder> found;
    std::vector<std::wstring> pending = {LbPath::WithSeparator(dataDirectory)};
    while (!pending.empty())
    {
        const std::wstring folder = std::move(pending.back());
        pending.pop_back();
        const LbRTTI* const type = findClass(folder);
        if (type == nullptr)
        {
            const std::vector<std::wstring> inner = listFolders(folder);
            pending.insert(pending.end(), inner.rbegin(), inner.rend());
            continue;
        }
        if (std::wstring inner = known.contains(folder) ? std::wstring() : findInner(*type, folder); !inner.empty())
        {
            found.push_back({folder, std::move(inner)});
        }
    }
    return found;
}

} // namespace Runner

#include "testing/lutestsuiterunner/journal/runfiles.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/reader.h"

namespace Runner
{

namespace
{

constexpr const wchar_t* c_Reports[] = {c_XmlReportName, c_HtmlReportName, c_JunitName, c_SummaryName};

/// Names of files in the folders of a run; '#' stands for digits.
constexpr std::wstring_view c_Texts[] = {L"#.txt", L"crash-#.txt", L"process-#.txt"};
constexpr std::wstring_view c_TaskFiles[] = {L"submission-#.json", L"canceled", L"losses.txt", L"task.sh",
                                             L"shard-#-#-#.txt"};

bool matches(std::wstring_view name, std::wstring_view pattern)
{
    constexpr std::wstring_view c_Digits = L"0123456789";
    for (; !pattern.empty(); pattern.remove_prefix(1))
    {
        const bool isNumber = pattern.front() == L'#';
        const std::size_t digits = std::min(name.find_first_not_of(c_Digits), name.size());
        const bool isFound = isNumber ? digits > 0 : name.starts_with(pattern.front());
        if (!isFound)
        {
            return false;
        }
        name.remove_prefix(isNumber ? digits : 1);
    }
    return name.empty();
}

bool matchesAny(std::wstring_view name, std::span<const std::wstring_view> patterns)
{
    return std::ranges::any_of(patterns, [name](std::wstring_view pattern) { return matches(name, pattern); });
}

std::wstring getSubfolder(const std::wstring& folder, const wchar_t* name)
{
    return LbPath::WithSeparator(folder + name);
}

/// Removes the file. A folder of this name does not belong to a run and stays.
void remove(const std::wstring& path)
{
    const bool isLeft = LbOs::QueryEntry(path) == LbOs::EEntry::File || LbOs::IsLink(path);
    if (isLeft && !LbOs::RemoveFile(path))
    {
        throw LbException(LbFormat(L"%s konnte nicht gelöscht werden", path));
    }
}

void removeIn(const std::wstring& folder, std::span<const std::wstring_view> patterns)
{
    for (const std::wstring& name : LbFileSystem::GetFileNames(folder))
    {
        if (matchesAny(name, patterns))
        {
            remove(folder + name);
        }
    }
    LbOs::RemoveEmptyDirectory(folder);
}

/// Removes the shards of a distributed run. Called only if there is one, because otherwise folders of these names
/// contain other runs.
void removeShards(const std::wstring& folder)
{
    for (std::uint32_t number = 1; LbFileSystem::IsDirectory(folder + GetShardFolderName(number)); ++number)
    {
        const std::wstring shard = folder + GetShardFolderName(number);
        RemoveRun(shard);
        LbOs::RemoveEmptyDirectory(shard);
    }
}

} // namespace

bool ContainsRun(const std::wstring& folder)
{
    return LbFileSystem::IsFile(folder + c_PlanName) || LbFileSystem::IsFile(folder + c_ShardsName) ||
           !FindJournals(folder).empty();
}

std::wstring FindForeignReport(const std::wstring& folder)
{
    const auto* const found =
        std::ranges::find_if(c_Reports, [&folder](const wchar_t* name) { return LbFileSystem::IsFile(folder + name); });
    return found == std::end(c_Reports) || ContainsRun(folder) ? std::wstring() : *found;
}

std::wstring FindForeignText(const std::wstring& folder)
{
    const std::wstring texts = getSubfolder({}, c_OutputFolderName);
    const std::vector<std::wstring> names = LbFileSystem::GetFileNames(folder + texts);
    const auto found = std::ranges::find_if(names, [](const std::wstring& name) { return matchesAny(name, c_Texts); });
    return found == names.end() || ContainsRun(folder) ? std::wstring() : texts + *found;
}

void RemoveRun(const std::wstring& folder)
{
    if (!ContainsRun(folder))
    {
        return;
    }
    // The plan is removed first, because journals without a plan belong to no run. The files that mark a run's folder
    // are removed last, so that the next run completes an interrupted removal.
    remove(folder + c_PlanName);
    for (const wchar_t* const name : {c_ProblemsName, c_ProofName})
    {
        remove(folder + name);
    }
    for (const wchar_t* const name : c_Reports)
    {
        remove(folder + name);
    }
    removeIn(getSubfolder(folder, c_OutputFolderName), c_Texts);
    if (LbFileSystem::IsFile(folder + c_ShardsName))
    {
        removeIn(getSubfolder(folder, c_TasksFolderName), c_TaskFiles);
        removeShards(folder);
        remove(folder + c_ShardsName);
    }
    for (const std::uint32_t number : FindJournals(folder))
    {
        remove(folder + GetJournalName(number));
    }
}

} // namespace Runner

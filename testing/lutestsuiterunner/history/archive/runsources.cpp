#include "testing/lutestsuiterunner/history/archive/runsources.h"

#include <algorithm>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/reader.h"

namespace Runner::History
{

namespace
{

/// The folder for reports of archive runs.
constexpr const wchar_t* c_ReportFolder = L"Archive";

/// The name of the run whose folder is the archive's.
constexpr const wchar_t* c_OwnName = L".";

std::vector<std::wstring> getFolders(const std::wstring& folder)
{
    std::vector<std::wstring> names;
    LbOs::VisitDirectory(folder, [&](const LbOs::SDirectoryEntry& entry) {
        if (entry.isDirectory)
        {
            names.push_back(entry.name);
        }
    });
    return names;
}

/// The XML reports in one folder below the archive; `prefix` is its name with a separator, or empty.
void addReports(const std::wstring& folder, const std::wstring& prefix, std::vector<SRunSource>& sources)
{
    for (const std::wstring& file : LbFileSystem::GetFileNames(folder + prefix))
    {
        // A report for build servers contains the same run again.
        if (file.ends_with(L".xml") && file != c_JunitName)
        {
            sources.push_back({prefix + file, {prefix + file}, ReadReport});
        }
    }
}

/// The journals of one folder below the archive. `prefix` is its name with a separator, or empty.
std::vector<std::wstring> getJournals(const std::wstring& folder, const std::wstring& prefix)
{
    std::vector<std::wstring> files;
    for (const std::uint32_t number : FindJournals(folder + prefix))
    {
        files.push_back(prefix + GetJournalName(number));
    }
    return files;
}

/// The journals and plans of the shards of a distributed run, and its proof, which contains how many records count.
/// Empty if no shard has begun and the run has not ended.
std::vector<std::wstring> getShardFiles(const std::wstring& folder, const std::wstring& prefix)
{
    std::vector<std::wstring> plans;
    std::vector<std::wstring> files;
    std::uint32_t number = 1;
    for (std::wstring shard = prefix + GetShardFolderName(number); LbFileSystem::IsFile(folder + shard + c_PlanName);
         shard = prefix + GetShardFolderName(++number))
    {
        plans.push_back(shard + c_PlanName);
        std::ranges::move(getJournals(folder, shard), std::back_inserter(files));
    }
    // A run that ended although none of its shards began has problems, but no journal.
    if (!files.empty() || LbFileSystem::IsFile(folder + prefix + c_ProblemsName))
    {
        std::ranges::move(plans, std::back_inserter(files));
    }
    if (!files.empty() && LbFileSystem::IsFile(folder + prefix + c_ProofName))
    {
        files.push_back(prefix + c_ProofName);
    }
    return files;
}

/// Plans and journals of the run in a folder below the archive, sorted; empty if no run has begun there.
std::vector<std::wstring> getRunFiles(const std::wstring& folder, const std::wstring& prefix)
{
    const bool isDistributed = LbFileSystem::IsFile(folder + prefix + c_ShardsName);
    std::vector<std::wstring> files = isDistributed ? getShardFiles(folder, prefix) : getJournals(folder, prefix);
    if (!files.empty())
    {
        files.push_back(prefix + c_PlanName);
        // The report is read instead if a journal cannot be read.
        if (LbFileSystem::IsFile(folder + prefix + c_XmlReportName))
        {
            files.push_back(prefix + c_XmlReportName);
        }
    }
    std::ranges::sort(files);
    return files;
}

/// The run of a folder in the archive, if there is one. Journals contain more than the report that was made from them.
void addRunFolder(const std::wstring& folder, const std::wstring& name, std::vector<SRunSource>& sources)
{
    const std::wstring prefix = name + LbPath::c_Separator;
    if (std::vector<std::wstring> files = getRunFiles(folder, prefix); !files.empty())
    {
        sources.push_back({name, std::move(files), ReadJournals});
        return;
    }
    const std::wstring report = prefix + c_XmlReportName;
    if (LbFileSystem::IsFile(folder + report))
    {
        sources.push_back({report, {report}, ReadReport});
    }
}

/// The archive's folder may itself be that of a run. Then its report is not another run.
void addOwnRun(const std::vector<std::wstring>& files, std::vector<SRunSource>& sources)
{
    if (!files.empty())
    {
        std::erase_if(sources, [](const SRunSource& source) { return source.name == c_XmlReportName; });
        sources.push_back({c_OwnName, files, ReadJournals});
    }
}

} // namespace

std::vector<SRunSource> FindRuns(const std::wstring& folder)
{
    std::vector<SRunSource> sources;
    addReports(folder, L"", sources);
    const std::vector<std::wstring> ownFiles = getRunFiles(folder, L"");
    addOwnRun(ownFiles, sources);
    const auto isShard = [&ownFiles](const std::wstring& name) {
        return std::ranges::binary_search(ownFiles, name + LbPath::c_Separator + c_PlanName);
    };
    for (const std::wstring& name : getFolders(folder))
    {
        if (name == c_ReportFolder)
        {
            addReports(folder, name + LbPath::c_Separator, sources);
        }
        else if (!isShard(name))
        {
            addRunFolder(folder, name, sources);
        }
    }
    std::ranges::sort(sources, {}, &SRunSource::name);
    return sources;
}

} // namespace Runner::History

#include "testing/lutestsuiterunner/history/runsources.h"

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

/// Plan and journals below the archive; empty if the folder contains no run.
std::vector<std::wstring> getJournals(const std::wstring& folder, const std::wstring& name)
{
    const std::wstring prefix = name + LbPath::c_Separator;
    std::vector<std::wstring> files;
    for (const std::uint32_t number : FindJournals(folder + prefix))
    {
        files.push_back(prefix + GetJournalName(number));
    }
    if (!files.empty())
    {
        files.push_back(prefix + c_PlanName);
    }
    std::ranges::sort(files);
    return files;
}

/// The run of the folder, if there is one. Journals contain more than the report that was made from them.
void addRunFolder(const std::wstring& folder, const std::wstring& name, std::vector<SRunSource>& sources)
{
    if (std::vector<std::wstring> journals = getJournals(folder, name); !journals.empty())
    {
        sources.push_back({name, std::move(journals), ReadJournals});
        return;
    }
    const std::wstring report = name + LbPath::c_Separator + c_XmlReportName;
    if (LbFileSystem::IsFile(folder + report))
    {
        sources.push_back({report, {report}, ReadReport});
    }
}

} // namespace

std::vector<SRunSource> FindRuns(const std::wstring& folder)
{
    std::vector<SRunSource> sources;
    addReports(folder, L"", sources);
    for (const std::wstring& name : getFolders(folder))
    {
        if (name == c_ReportFolder)
        {
            addReports(folder, name + LbPath::c_Separator, sources);
        }
        else
        {
            addRunFolder(folder, name, sources);
        }
    }
    std::ranges::sort(sources, {}, &SRunSource::name);
    return sources;
}

} // namespace Runner::History

#include "testing/lutestsuiterunner/history/runsources.h"

#include <algorithm>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/os/files.h"

namespace Runner::History
{

namespace
{

constexpr const wchar_t* c_ReportName = L"report.xml";
/// Where archive runs put their reports.
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
        // Beside the report of a build server lies the same run for other readers.
        if (file.ends_with(L".xml") && file != L"junit.xml")
        {
            sources.push_back({prefix + file, {prefix + file}, ReadReport});
        }
    }
}

/// The run whose folder it is, if any.
void addRunFolder(const std::wstring& folder, const std::wstring& name, std::vector<SRunSource>& sources)
{
    const std::wstring report = name + LbPath::c_Separator + c_ReportName;
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

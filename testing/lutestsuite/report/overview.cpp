/// The page that lists an archive of reports.

#include <algorithm>
#include <map>
#include <new>
#include <tuple>
#include <utility>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/xmlnode.h"
#include "testing/lutestsuite/output/warning.h"
#include "testing/lutestsuite/report/companions.h"
#include "testing/lutestsuite/report/diffpage.h"
#include "testing/lutestsuite/report/page.h"

namespace
{

using LuTestSuite::MarkupWriter;

struct SConfiguration
{
    const wchar_t* name; ///< the name in reports
    const wchar_t* tag;  ///< the name in file names
};

/// In page order.
constexpr SConfiguration c_Configurations[] = {
    {L"Release x64", L"x64.release"},
    {L"Release Win32", L"x86.release"},
    {L"Debug x64", L"x64.debug"},
    {L"Debug Win32", L"x86.debug"},
};

/// A number of successes and the total.
struct SRate
{
    std::uint32_t successful = 0;
    std::uint32_t total = 0;
};

struct SArchivedRun
{
    std::wstring name; ///< name of its files, without extension
    std::wstring version;
    std::wstring configuration;
    std::wstring dateBegin;
    SRate classes;
    SRate cases;
};

/// Directories end in a separator.
struct SArchive
{
    std::wstring root;
    std::wstring reports;
    std::wstring diffs;
    std::wstring linkPrefix; ///< path of the reports, relative to the page
};

/// The time stamp "[Y-m-d]-[H-i-s]" in the name; the whole name if it contains none.
std::wstring getVersion(const std::wstring& name)
{
    constexpr std::size_t c_TimeStampLength = 23;
    const std::size_t start = name.find(L'[');
    return start == std::wstring::npos ? name : name.substr(start, c_TimeStampLength);
}

/// A comparison is named after the versions of its two runs. If runs of one configuration share a time stamp, their
/// file names become their versions, so that each comparison has its own name.
void tellVersionsApart(std::vector<SArchivedRun>& runs)
{
    std::map<std::pair<std::wstring, std::wstring>, int> counts;
    const auto getKey = [](const SArchivedRun& run) { return std::pair(run.configuration, getVersion(run.name)); };
    for (const SArchivedRun& run : runs)
    {
        ++counts[getKey(run)];
    }
    for (SArchivedRun& run : runs)
    {
        run.version = counts[getKey(run)] == 1 ? getVersion(run.name) : run.name;
    }
}

SRate readRate(const XMLNode& node, const char* totalName)
{
    SRate rate;
    LuTestSuiteUtils::GetUInt32(node.GetChild("Successful"), rate.successful);
    LuTestSuiteUtils::GetUInt32(node.GetChild(totalName), rate.total);
    return rate;
}

/// Reads only what the page shows, because archives grow and reports are large. Keeps texts as written, because they
/// are written to the page unchanged. False if the report cannot be read.
bool readRun(const std::wstring& path, SArchivedRun& run)
try
{
    XMLDocument document;
    if (document.Load(path, "testsuite", XMLDocument::EText::AsWritten) != XMLDocument::EResult::Ok)
    {
        return false;
    }
    const XMLNode root = document.GetRoot();
    const XMLNode statistics = root.GetChild("Statistics");
    run.configuration = root.GetChild("BuildInfo").GetChild("BuildConfiguration").GetText();
    run.dateBegin = statistics.GetChild("DateBegin").GetText();
    run.classes = readRate(root.GetChild("ClassStatistics"), "ClassesTotal");
    run.cases = readRate(statistics, "CasesTotal");
    return true;
}
catch (const std::bad_alloc&)
{
    // A report too large for memory is skipped.
    return false;
}

bool isKnown(const std::wstring& configuration)
{
    return std::ranges::any_of(c_Configurations,
                               [&](const SConfiguration& known) { return configuration == known.name; });
}

/// The runs, newest first. The page compares neighbouring runs of the same configuration.
std::vector<SArchivedRun> readRuns(const SArchive& archive, const std::wstring& reportPrefix)
{
    constexpr std::wstring_view c_Ending = L".xml";
    std::vector<SArchivedRun> runs;
    for (const std::wstring& file : LbFileSystem::GetFileNames(archive.reports))
    {
        if (!file.starts_with(reportPrefix) || !file.ends_with(c_Ending))
        {
            continue;
        }
        SArchivedRun run;
        run.name = file.substr(0, file.size() - c_Ending.size());
        if (!readRun(archive.reports + file, run))
        {
            LuTestSuite::WriteWarning(L"Fehler: Report %s konnte nicht gelesen werden.\n", archive.reports + file);
        }
        else if (!isKnown(run.configuration))
        {
            LuTestSuite::WriteWarning(L"Warnung: Report %s hat die unbekannte Konfiguration '%s'.\n",
                                      archive.reports + file, run.configuration);
        }
        else
        {
            runs.push_back(std::move(run));
        }
    }
    tellVersionsApart(runs);
    std::ranges::stable_sort(runs, std::ranges::greater(),
                             [](const SArchivedRun& run) { return std::tie(run.dateBegin, run.version); });
    return runs;
}

/// Writes the comparison of a run with an older run, which is the reference.
void writeDiff(const SArchive& archive, const std::wstring& path, const SArchivedRun& older, const SArchivedRun& newer)
{
    const std::wstring pathA = archive.reports + older.name + L".xml";
    const std::wstring pathB = archive.reports + newer.name + L".xml";
    LuTestSuiteReport::SReportData a;
    LuTestSuiteReport::SReportData b;
    if (LuTestSuiteReport::LoadReportDataFromXMLFile(pathA, a) &&
        LuTestSuiteReport::LoadReportDataFromXMLFile(pathB, b))
    {
        LuTestSuite::WorkOrReport(LuTestSuite::c_PageFailed, path, [&] {
            LuTestSuite::WriteDiffPage(path, {pathA, a}, {pathB, b}, true, true);
            LuTestSuite::WriteCompanions(path, true, true);
        });
    }
}

/// True for characters that are not allowed in links or have a special meaning there. A backslash is kept on platforms
/// where it separates folders: file links accept it. A text before a colon could be read as a protocol.
bool breaksLink(char character)
{
    const bool isPlain = character > ' ' && character < '\x7F';
    return !isPlain || std::string_view("\"#%&:<>?").find(character) != std::string_view::npos ||
           (character == '\\' && !LbPath::IsSeparator(L'\\'));
}

std::wstring toLink(const std::wstring& path)
{
    std::wstring link;
    for (const char byte : LbEncoding::ToUtf8(path))
    {
        link += breaksLink(byte) ? LbFormat(L"%%%02X", static_cast<unsigned char>(byte))
                                 : std::wstring(1, static_cast<wchar_t>(byte));
    }
    return link;
}

/// Empty if the path is empty.
std::wstring getLinkCell(const std::wstring& path, const wchar_t* text)
{
    return path.empty() ? std::wstring() : LbFormat(L"<a href=\"%s\">%s</a>", toLink(path), text);
}

/// The link to the comparison. Writes the comparison if it does not exist; empty if that fails.
std::wstring provideDiff(const SArchive& archive, const std::wstring& tag, const SArchivedRun& older,
                         const SArchivedRun& newer)
{
    const std::wstring name = LbFormat(L"Diff.%s.%s-vs-%s.html", tag, older.version, newer.version);
    const std::wstring path = archive.diffs + name;
    if (!LbFileSystem::Exists(path))
    {
        writeDiff(archive, path, older, newer);
    }
    return LbFileSystem::Exists(path) ? archive.linkPrefix + L"Diff/" + name : std::wstring();
}

std::wstring getReportLink(const SArchive& archive, const SArchivedRun& run)
{
    const std::wstring file = run.name + L".html";
    return LbFileSystem::Exists(archive.reports + file) ? archive.linkPrefix + file : std::wstring();
}

std::wstring getRateCell(const SRate& rate)
{
    return LbFormat(L"%4.2f%% (%d/%d)", LuTestSuite::GetPercentage(rate.successful, rate.total), rate.successful,
                    rate.total);
}

/// Two bars with a total width of 500 pixels.
std::wstring getBarCell(const SRate& rate)
{
    constexpr int c_FullWidth = 500;
    const float ratio = rate.total == 0 ? 0.0F : static_cast<float>(rate.successful) / static_cast<float>(rate.total);
    // An edited report may contain more successes than cases.
    const int width = static_cast<int>(std::min(ratio, 1.0F) * static_cast<float>(c_FullWidth));
    return LbFormat(L"<div class=\"ok\" style=\"width:%dpx\">&nbsp;</div>"
                    L"<div class=\"error\" style=\"width:%dpx\">&nbsp;</div>",
                    width, c_FullWidth - width);
}

void writeRun(MarkupWriter& writer, const SArchivedRun& run, const std::wstring& reportLink,
              const std::wstring& diffLink)
{
    LuTestSuite::WriteRow(writer, L"<tr>", L"td",
                          {MarkupWriter::Escape(run.version), LuTestSuite::ToMarkup(run.dateBegin),
                           getRateCell(run.classes), getRateCell(run.cases), getBarCell(run.cases),
                           getLinkCell(reportLink, L"Report"), getLinkCell(diffLink, L"Diff")});
}

void writeConfiguration(MarkupWriter& writer, const SArchive& archive, const SConfiguration& configuration,
                        const std::vector<SArchivedRun>& runs)
{
    writer.WriteLine(LbFormat(L"<a name=\"%s\"></a><h2>%s</h2>", configuration.tag, configuration.name));
    writer.WriteLineOpen(L"<table id=\"overview\">");
    LuTestSuite::WriteRow(writer, L"<tr>", L"th",
                          {L"Version", L"Run Date", L"Successful Classes", L"Successful Cases", L"Report", L"Diff"});
    const SArchivedRun* newer = nullptr;
    for (const SArchivedRun& run : runs)
    {
        if (run.configuration == configuration.name)
        {
            writeRun(writer, run, getReportLink(archive, run),
                     newer == nullptr ? std::wstring() : provideDiff(archive, configuration.tag, run, *newer));
            newer = &run;
        }
    }
    writer.WriteLineClose(L"</table>");
}

void writeOverview(MarkupWriter& writer, const SArchive& archive, const std::vector<SArchivedRun>& runs)
{
    writer.WriteLineOpen(L"<table id=\"overview-info\">");
    LuTestSuite::WriteRow(writer, L"<tr>", L"td", {L"Directory:", MarkupWriter::Escape(archive.root)});
    writer.WriteLineClose(L"</table>");
    for (const SConfiguration& configuration : c_Configurations)
    {
        const bool hasRuns =
            std::ranges::any_of(runs, [&](const SArchivedRun& run) { return run.configuration == configuration.name; });
        if (hasRuns)
        {
            writeConfiguration(writer, archive, configuration, runs);
        }
    }
}

} // namespace

void LuTestSuiteReport::GenerateReportDirectoryOverview(const std::wstring& root, const std::wstring& name,
                                                        const std::wstring& subDirectory,
                                                        const std::wstring& reportPrefix)
{
    SArchive archive;
    // WithSeparator adds no separator to an empty name: a separator alone would mean the root of the file system or of
    // the links.
    archive.root = LbPath::WithSeparator(root);
    archive.reports = LbPath::WithSeparator(archive.root + subDirectory);
    archive.diffs = archive.reports + L"Diff" + LbPath::c_Separator;
    archive.linkPrefix = subDirectory.empty() ? std::wstring() : subDirectory + L'/';
    for (const std::wstring& directory : {archive.root, archive.reports})
    {
        if (!LuTestSuiteUtils::AssertDirectory(directory))
        {
            LuTestSuite::WriteWarning(L"Fehler: Ungültiges Verzeichnis %s\n", directory);
            return;
        }
    }
    // A failure is not reported here: without the folder, each comparison that cannot be written prints an error.
    LuTestSuiteUtils::AssertDirectory(archive.diffs);
    LuTestSuite::WorkOrReport(L"Fehler beim Erzeugen der Report-Übersicht für Verzeichnis %s", archive.root, [&] {
        const std::vector<SArchivedRun> runs = readRuns(archive, reportPrefix);
        LuTestSuite::WritePage(archive.root + name + L".html", L"Archive Overview",
                               [&](MarkupWriter& writer) { writeOverview(writer, archive, runs); });
    });
}

// Writes pages of the history of runs into a folder: make_history_pages FOLDER [CASES]. CASES is the number of cases of
// the large page, 20000 if not given.

#include <cstdio>
#include <exception>
#include <string>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lustream.h"
#include "testing/lutestsuiterunner/history/reports/page.h"
#include "tests/support/syntheticruns.h"

namespace
{

using namespace Runner::History;
using SyntheticRuns::SArchive;

constexpr std::size_t c_Runs = 50;

void label(SArchive& archive)
{
    for (std::size_t run = 0; run < archive.runs.size(); ++run)
    {
        SRunLabel& runLabel = archive.runs[run].label;
        const int day = static_cast<int>(run);
        runLabel.name = LbFormat(L"Report.x64.release.[2026-%02d-%02d]-[22-00-00].xml", day / 28 + 1, day % 28 + 1);
        runLabel.begin = LbFormat(L"2026-%02d-%02d 22:00:00", day / 28 + 1, day % 28 + 1);
        runLabel.build = LbFormat(L"svn://server/produkt/trunk@%d", 4100 + day / 2);
        runLabel.machine = L"BUILD7";
    }
    for (std::size_t index = 0; index < archive.names.size(); ++index)
    {
        archive.names[index].className = LbFormat(L"CFlächenBerechnung%02d", static_cast<int>(index / 97));
        archive.names[index].caseName = LbFormat(L"Grundriss %05d Obergeschoss.dat", static_cast<int>(index));
    }
}

/// Of each forty cases, one fails in the newest run, one is flaky, one becomes slower, one is missing in the newest
/// run, one failed for ten runs, and one becomes faster.
SArchive makeMedium()
{
    SyntheticRuns::SSettings settings;
    settings.cases = 400;
    settings.runs = c_Runs;
    settings.factor = [](std::size_t testCase, std::size_t run) {
        return testCase % 40 == 2 && run >= 35 ? 1.4 : testCase % 40 == 6 && run >= 25 ? 0.6 : 1.0;
    };
    settings.fails = [](std::size_t testCase, std::size_t run) {
        return (testCase % 40 == 0 && run + 1 == c_Runs) || (testCase % 40 == 1 && (run + testCase / 40) % 11 == 3) ||
               (testCase % 40 == 4 && run >= 10 && run < 20);
    };
    SArchive archive = MakeArchive(settings);
    label(archive);
    for (SCell& cell : archive.runs.back().cells)
    {
        if (!cell.measured.HasPassed())
        {
            archive.runs.back().messages.push_back(
                {cell.caseIndex,
                 L"d:\\quellen\\kern\\flaeche.cpp(17): Wert <17.25> statt 18.5 & <script>weg()</script>"});
        }
    }
    std::erase_if(archive.runs.back().cells, [](const SCell& cell) { return cell.caseIndex % 40 == 3; });
    return archive;
}

/// Half of the cases fail in the newest run. The times of all cases never change, so no search for changes is needed.
SArchive makeLarge(std::size_t cases)
{
    SArchive archive;
    archive.runs.resize(c_Runs);
    archive.names.resize(cases);
    for (std::size_t run = 0; run < c_Runs; ++run)
    {
        for (std::size_t testCase = 0; testCase < cases; ++testCase)
        {
            SCell cell;
            cell.caseIndex = static_cast<std::uint32_t>(testCase);
            cell.measured.seconds = 0.01F;
            const bool hasFailed = testCase % 2 == 0 && run + 1 == c_Runs;
            cell.measured.result = hasFailed ? ECaseRunResult::Different : ECaseRunResult::Ok;
            archive.runs[run].cells.push_back(cell);
        }
    }
    label(archive);
    return archive;
}

void writePage(const std::wstring& path, const SArchive& archive)
{
    std::vector<SAnalysis> analyses;
    analyses.push_back(Analyze(L"Release x64", archive.GetTable(), {}, AnalyzeSteps(archive.GetTable(), {})));
    const SGateResults gates = CheckGates({ReadGate(L"new-failures=0"), ReadGate(L"missing<100")}, analyses, 0, {});
    const std::string page = MakePage(analyses, gates, 0);
    LuStreamWriteBinaryFile file(path);
    file.Write(page.data(), page.size());
    file.Close();
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2 && argumentCount != 3)
    {
        std::fputs("usage: make_history_pages FOLDER [CASES]\n", stderr);
        return 2;
    }
    try
    {
        const std::size_t manyCases = argumentCount == 3 ? std::stoul(arguments[2]) : 20000;
        const std::wstring folder = LbPath::WithSeparator(LbEncoding::FromNative(arguments[1]));
        LbFileSystem::AssertDirectory(folder);
        writePage(folder + L"history.html", makeMedium());
        writePage(folder + L"history_large.html", makeLarge(manyCases));
    }
    catch (const std::exception& exception)
    {
        std::fprintf(stderr, "make_history_pages: %s\n", exception.what());
        return 1;
    }
    return 0;
}

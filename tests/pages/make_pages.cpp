// Writes pages of every kind into a folder: make_pages FOLDER [CASES]. CASES is the number of cases of the large pages,
// 20000 if not given.

#include <cstdio>
#include <exception>
#include <iterator>
#include <stdexcept>
#include <string>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "tests/support/places.h"
#include "tests/support/samplereports.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using SData = LuTestSuiteReport::SReportData;

constexpr std::uint32_t c_MediumCases = 2000;

void writeRun(const std::wstring& path, const SData& data)
{
    LuTestSuiteReport::GenerateHTMLReport(path, data, true, true, false, false);
}

void writeDiff(const std::wstring& path, const SData& a, const SData& b)
{
    LuTestSuiteReport::GenerateHTMLDiffReport(path, L"D:\\Archiv\\Report 1.xml", L"D:\\Archiv\\Report 2.xml", a, b,
                                              true, true, false, false);
}

/// A pseudo-random number below 1000.
std::uint32_t scatter(std::uint32_t number)
{
    return number * 2654435761U / 7919 % 1000;
}

/// About 2 % of the cases fail in every run. About another 1 % fail only in the run with this number.
ECaseRunResult getLargeResult(std::uint32_t index, std::uint32_t run)
{
    constexpr ECaseRunResult c_Results[] = {ECaseRunResult::Error, ECaseRunResult::Different, ECaseRunResult::TimeOut,
                                            ECaseRunResult::Error, ECaseRunResult::Exception, ECaseRunResult::Unknown};
    const bool hasFailed = scatter(index) < 20 || scatter(index + 100003 * (run + 1)) < 10;
    return hasFailed ? c_Results[scatter(index + 17) % std::size(c_Results)] : ECaseRunResult::Ok;
}

std::wstring getLargeClassName(std::uint32_t index)
{
    constexpr const wchar_t* c_Names[] = {L"CBildLeser",
                                          L"CDruckVorschau",
                                          L"CFlächenBerechnung",
                                          L"CGeometrieKernVerschneidung",
                                          L"CKatalogDatenbank",
                                          L"CMassKetten",
                                          L"CPlanLayout",
                                          L"CRechteVerwaltung",
                                          L"CSchnittstelleAustauschformat",
                                          L"CTextUmbruch"};
    return LbFormat(L"%s%d", c_Names[index % std::size(c_Names)], index / std::size(c_Names) + 1);
}

LuTestSuiteReport::SReportCase makeLargeCase(std::uint32_t index, std::uint32_t run, const std::wstring& className)
{
    LuTestSuiteReport::SReportCase testCase =
        MakeReportCase(className, LbFormat(L"Grundriss %05d Obergeschoss.dat", index), getLargeResult(index, run));
    testCase.Id = index;
    testCase.Time = static_cast<float>(scatter(index + run)) / 1000.0F;
    testCase.Memory = std::uint64_t{scatter(index + run)} * 104729;
    if (testCase.Result != ECaseRunResult::Ok)
    {
        testCase.Dumps = {{true, LbFormat(L"d:\\quellen\\kern\\flaeche.cpp(%d): Wert 17.25 statt 18.5", index % 900)},
                          {false, L"Abweichung im dritten Polygonzug, 4 Punkte"},
                          {false, L"..."}};
    }
    return testCase;
}

/// The cases are ordered by class, as in a run.
SData makeLargeReport(std::uint32_t caseCount, std::uint32_t run)
{
    constexpr std::uint32_t c_Classes = 40;
    SData data = MakePassedReport();
    for (std::uint32_t index = 0; index < c_Classes; ++index)
    {
        data.Classes.push_back(MakeReportClass(getLargeClassName(index), 0));
    }
    for (std::uint32_t index = 0; index < caseCount; ++index)
    {
        LuTestSuiteReport::SReportClass& testClass =
            data.Classes[data.Classes.size() - c_Classes + std::uint64_t{index} * c_Classes / caseCount];
        data.Cases.push_back(makeLargeCase(index, run, testClass.Name));
        const LuTestSuiteReport::EReportResult result = LuTestSuiteReport::getReportResult(data.Cases.back().Result);
        ++testClass.CasesTotal;
        testClass.Successful += result == LuTestSuiteReport::eRR_Success ? 1 : 0;
        testClass.Failures += result == LuTestSuiteReport::eRR_Failure ? 1 : 0;
        testClass.Errors += result == LuTestSuiteReport::eRR_Error ? 1 : 0;
    }
    SetReportFigures(data);
    return data;
}

/// Cases whose messages and names exceed the width of a page.
SData makeLongReport()
{
    SData data = MakeMixedReport();
    std::wstring message;
    while (message.size() < 100000)
    {
        message += LbFormat(L"Punkt %d liegt neben der Kante; ", static_cast<int>(message.size()));
    }
    data.Cases[3].Dumps = {{true, message}};
    data.Cases[4].Dumps = {{true, std::wstring(100000, L'x')}};
    data.Cases[5].Dumps.assign(2000, {true, L"noch eine Zeile"});
    data.Cases[9].ClassName = L"CNetzVerbindungMitEinemSehrLangenNamenOhneLuecke";
    return data;
}

/// Writes a page from a report file that has every kind of markup that our reader accepts but a page must not contain.
void writeHostileDiff(const std::wstring& path)
{
    SData data;
    if (!LuTestSuiteReport::LoadReportDataFromXMLFile(
            LbEncoding::FromNative(LUTESTSUITE_SOURCE_DIR "/tests/pages/hostile.xml"), data))
    {
        throw std::runtime_error("the hostile report cannot be read");
    }
    writeDiff(path, MakePassedReport(), data);
}

void addArchived(const std::wstring& folder, const std::wstring& configuration, const std::wstring& tag,
                 std::uint32_t day, std::uint32_t successful)
{
    SData data = MakeMixedReport();
    data.BuildConfiguration = configuration;
    data.DateBegin = LbFormat(L"2024-05-%02d 22:00:00", day);
    data.Successful = successful;
    const std::wstring name = LbFormat(L"Report %s & 100%% größer #1 [2024-05-%02d]-[22-00-00]", tag, day);
    LuTestSuiteReport::GenerateXMLReport(folder + name + L".xml", data);
    writeRun(folder + name + L".html", data);
}

void writeArchive(const std::wstring& folder)
{
    const std::wstring reports = folder + L"Archive" + LbPath::c_Separator;
    LbFileSystem::AssertDirectory(reports);
    for (std::uint32_t day = 1; day <= 9; ++day)
    {
        addArchived(reports, L"Release x64", L"x64.release", day, day + 3);
    }
    addArchived(reports, L"Release Win32", L"x86.release", 8, 0);
    addArchived(reports, L"Release Win32", L"x86.release", 9, 11);
    addArchived(reports, L"Debug x64", L"x64.debug", 9, 12);
    LuTestSuiteReport::GenerateReportDirectoryOverview(folder, L"overview", L"Archive", L"Report");
}

void writePages(const std::wstring& folder, std::uint32_t manyCases)
{
    LbFileSystem::RemoveTree(folder);
    LbFileSystem::AssertDirectory(folder);
    writeRun(folder + L"run.html", MakeMixedReport());
    writeRun(folder + L"passed.html", MakePassedReport());
    writeRun(folder + L"medium.html", makeLargeReport(c_MediumCases, 0));
    writeRun(folder + L"large.html", makeLargeReport(manyCases, 0));
    writeRun(folder + L"long.html", makeLongReport());
    writeDiff(folder + L"diff.html", MakeMixedReport(), MakeLaterReport());
    writeDiff(folder + L"diff_medium.html", makeLargeReport(c_MediumCases, 0), makeLargeReport(c_MediumCases, 1));
    writeDiff(folder + L"diff_large.html", makeLargeReport(manyCases, 0), makeLargeReport(manyCases, 1));
    writeHostileDiff(folder + L"hostile.html");
    writeArchive(folder);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2 && argumentCount != 3)
    {
        std::fputs("usage: make_pages FOLDER [CASES]\n", stderr);
        return 2;
    }
    try
    {
        const unsigned long manyCases = argumentCount == 3 ? std::stoul(arguments[2]) : 20000;
        writePages(LbPath::WithSeparator(LbEncoding::FromNative(arguments[1])), static_cast<std::uint32_t>(manyCases));
    }
    catch (const std::exception& exception)
    {
        std::fprintf(stderr, "make_pages: %s\n", exception.what());
        return 1;
    }
    return 0;
}

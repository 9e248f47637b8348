// Writes pages of every kind into a folder: make_pages FOLDER

#include <cstdio>
#include <exception>
#include <stdexcept>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "tests/support/places.h"
#include "tests/support/samplereports.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using SData = LuTestSuiteReport::SReportData;

constexpr std::uint32_t c_ManyCases = 20000;

void writeRun(const std::wstring& path, const SData& data)
{
    LuTestSuiteReport::GenerateHTMLReport(path, data, true, true, false, false);
}

void writeDiff(const std::wstring& path, const SData& a, const SData& b)
{
    LuTestSuiteReport::GenerateHTMLDiffReport(path, L"D:\\Archiv\\Report 1.xml", L"D:\\Archiv\\Report 2.xml", a, b,
                                              true, true, false, false);
}

/// Times and memory in no order, every tenth case failed, by `shift` another one.
SData makeLargeReport(std::uint32_t shift)
{
    SData data = MakePassedReport();
    for (std::uint32_t index = 0; index < c_ManyCases; ++index)
    {
        const bool hasFailed = (index + shift) % 10 == 0;
        LuTestSuiteReport::SReportCase testCase =
            MakeReportCase(LbFormat(L"CKlasse%d", index % 100), LbFormat(L"Datensatz %d.txt", index),
                           hasFailed ? ECaseRunResult::Error : ECaseRunResult::Ok);
        testCase.Id = index;
        testCase.Time = static_cast<float>((index + shift) * 7919 % c_ManyCases) / 1000.0F;
        testCase.Memory = std::uint64_t{index + shift} * 104729 % 1000003;
        if (hasFailed)
        {
            testCase.Dumps = {{true, L"Wert 17 statt 18"}, {false, L"..."}};
        }
        data.Cases.push_back(testCase);
    }
    return data;
}

/// Of a file that tries every way out of a page's markup that our reader, which takes more than XML, leaves it.
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

void writePages(const std::wstring& folder)
{
    LbFileSystem::RemoveTree(folder);
    LbFileSystem::AssertDirectory(folder);
    writeRun(folder + L"run.html", MakeMixedReport());
    writeRun(folder + L"passed.html", MakePassedReport());
    writeRun(folder + L"large.html", makeLargeReport(0));
    writeDiff(folder + L"diff.html", MakeMixedReport(), MakeLaterReport());
    writeDiff(folder + L"diff_large.html", makeLargeReport(0), makeLargeReport(1));
    writeHostileDiff(folder + L"hostile.html");
    writeArchive(folder);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2)
    {
        std::fputs("usage: make_pages FOLDER\n", stderr);
        return 2;
    }
    try
    {
        writePages(LbPath::WithSeparator(LbEncoding::FromNative(arguments[1])));
    }
    catch (const std::exception& exception)
    {
        std::fprintf(stderr, "make_pages: %s\n", exception.what());
        return 1;
    }
    return 0;
}

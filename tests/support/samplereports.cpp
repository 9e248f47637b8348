#include "tests/support/samplereports.h"

#include <iterator>
#include <limits>

#include "base/lbformat.h"

namespace
{

using SData = LuTestSuiteReport::SReportData;
using SCase = LuTestSuiteReport::SReportCase;
using LuTestSuiteRun::ECaseRunResult;

void setMachine(SData& data)
{
    data.BuildConfiguration = L"Release x64";
    data.Processor = L"Model: Muster 3000, Cores: 8, Speed 3.200 GHz, Memory 15.9 GB";
    data.GPU = L"Grafik Fünf";
    data.MachineName = L"PRÜFSTAND";
    data.DataDirectory = L"D:\\Prüfdaten\\";
    data.ExecutionMode = L"External";
    data.ThreadCount = 4;
    data.TimeOut = 300;
    data.DateBegin = L"2024-05-03 12:30:11";
    data.DateEnd = L"2024-05-03 12:31:40";
}

void setPscm(SData& data)
{
    data.PscmInfo = std::make_unique<LuTestSuiteUtils::SPscmInfo>();
    data.PscmInfo->Server = L"https://quellen.example.org";
    data.PscmInfo->Repository = L"Produkt";
    data.PscmInfo->Branch = L"main";
    data.PscmInfo->Changeset = L"4711";
    data.PscmInfo->ChangesetAuthor = L"Erika Muster";
    data.PscmInfo->WorkspacePath = L"C:\\Quellen\\Produkt";
}

void setSvn(SData& data)
{
    data.SvnInfo = std::make_unique<LuTestSuiteUtils::SSvnInfo>();
    data.SvnInfo->URL = L"svn://server/trunk";
    data.SvnInfo->Revision = L"4699";
    data.SvnInfo->WorkingCopyRootPath = L"D:\\Arbeit";
    data.SvnInfo->LastChangedAuthor = L"jörg";
    data.SvnInfo->LastChangedRev = L"4700";
    data.SvnInfo->LastChangedDate = L"2024-02-29 12:34:56 +0100";
}

SCase makeCase(std::uint32_t id, const std::wstring& className, const std::wstring& caseName, ECaseRunResult result,
               std::vector<LuTestSuiteReport::SReportDump> dumps = {})
{
    SCase testCase = MakeReportCase(className, caseName, result);
    testCase.Id = id;
    testCase.Time = 0.25F * static_cast<float>(id + 1);
    testCase.Memory = 1024 * (id + 1);
    testCase.Dumps = std::move(dumps);
    return testCase;
}

void setLeak(SCase& testCase, std::int64_t bytes)
{
    testCase.MemoryDelta = bytes;
    testCase.Info = LbFormat(L"Speicherleck von %I64i Bytes detektiert.", bytes);
    testCase.Warning = true;
}

/// Sets two extreme values and otherwise distinct values, so that tests detect exchanged fields.
void setFiguresApart(SData& data)
{
    std::uint32_t number = 100;
    for (std::uint32_t* figure : {&data.ThreadCount, &data.TimeOut, &data.ClassesTotal, &data.ClassesSuccessful,
                                  &data.CasesTotal, &data.Successful, &data.Failures, &data.Errors, &data.Warnings})
    {
        *figure = ++number;
    }
    data.TimeMin = 0.000001F;
    data.MemoryMax = std::numeric_limits<std::uint64_t>::max();
}

} // namespace

SCase MakeReportCase(const std::wstring& className, const std::wstring& caseName, ECaseRunResult result, bool warning)
{
    SCase testCase;
    testCase.ClassName = className;
    testCase.CaseName = caseName;
    testCase.Time = 0.5F;
    testCase.Memory = 2048;
    testCase.Result = result;
    testCase.Warning = warning;
    return testCase;
}

LuTestSuiteReport::SReportClass MakeReportClass(const std::wstring& name, std::uint32_t total, std::uint32_t errors,
                                                std::uint32_t failures, std::uint32_t warnings)
{
    LuTestSuiteReport::SReportClass testClass;
    testClass.Name = name;
    testClass.CasesTotal = total;
    testClass.Successful = total - errors - failures;
    testClass.Errors = errors;
    testClass.Failures = failures;
    testClass.Warnings = warnings;
    return testClass;
}

void SetReportFigures(SData& data)
{
    data.ClassesSuccessful = data.ClassesFlagged = data.CasesTotal = data.Successful = 0;
    data.Errors = data.Failures = data.Warnings = 0;
    data.ClassesTotal = static_cast<std::uint32_t>(data.Classes.size());
    for (const LuTestSuiteReport::SReportClass& testClass : data.Classes)
    {
        const bool isSuccessful = testClass.Successful == testClass.CasesTotal;
        data.ClassesSuccessful += isSuccessful ? 1 : 0;
        data.ClassesFlagged += isSuccessful && testClass.Warnings == 0 ? 0 : 1;
        data.CasesTotal += testClass.CasesTotal;
        data.Successful += testClass.Successful;
        data.Errors += testClass.Errors;
        data.Failures += testClass.Failures;
        data.Warnings += testClass.Warnings;
    }
    data.TimeTotal = 89.25F;
    data.TimeAvg = 0.125F;
    data.TimeMax = 2.5F;
    data.TimeMin = 0.000125F;
    data.MemoryAvg = 123456;
    data.MemoryMax = 5000000000;
    data.MemoryMin = 512;
}

SData MakePassedReport()
{
    SData data;
    setMachine(data);
    data.Classes = {MakeReportClass(L"CDruck", 2), MakeReportClass(L"CLeser", 1)};
    data.Cases.push_back(makeCase(0, L"CDruck", L"hoch", ECaseRunResult::Ok));
    data.Cases.push_back(makeCase(1, L"CDruck", L"quer", ECaseRunResult::Ok));
    data.Cases.push_back(makeCase(2, L"CLeser", L"leer.txt", ECaseRunResult::Ok));
    SetReportFigures(data);
    return data;
}

SData MakeMixedReport()
{
    SData data;
    setMachine(data);
    setPscm(data);
    data.Classes = {MakeReportClass(L"CDruck", 3, 0, 0, 1), MakeReportClass(L"CLeser", 5, 0, 4),
                    MakeReportClass(L"CNetz", 4, 4)};
    data.Classes[1].ContactName = L"Jörg Müller";
    data.Classes[1].ContactEMail = L"joerg@example.org";
    data.Classes[2].ContactEMail = L"netz@example.org";

    const SCase cases[] = {
        makeCase(0, L"CDruck", L"hoch", ECaseRunResult::Ok, {{false, L"Seite 1"}, {false, L"Seite 2"}}),
        makeCase(1, L"CDruck", L"Größe <A4> & \"A5\"", ECaseRunResult::Ok),
        makeCase(2, L"CDruck", L"Leck", ECaseRunResult::Ok),
        makeCase(4, L"CLeser", L"leer.txt", ECaseRunResult::Error, {{true, L"3 &lt; 4"}, {false, L"..."}}),
        makeCase(5, L"CLeser", L"bricht ab", ECaseRunResult::Exception, {{true, L"Zugriff verletzt"}}),
        makeCase(6, L"CLeser", L"fehlt.txt", ECaseRunResult::NoInput),
        makeCase(7, L"CLeser", L"weicht ab", ECaseRunResult::Different),
        makeCase(8, L"CLeser", L"voll.txt", ECaseRunResult::Ok),
        makeCase(9, L"CNetz", L"Absturz", ECaseRunResult::Unknown),
        makeCase(10, L"CNetz", L"unbekannt", ECaseRunResult::NoMatchingCase),
        makeCase(11, L"CNetz", L"abgebrochen", ECaseRunResult::Canceled),
        makeCase(12, L"CNetz", L"hängt", ECaseRunResult::TimeOut),
    };
    data.Cases.assign(std::begin(cases), std::end(cases));
    setLeak(data.Cases[2], 48);
    SetReportFigures(data);
    return data;
}

SData MakeFullReport()
{
    SData data = MakeMixedReport();
    setSvn(data);
    setFiguresApart(data);
    std::erase_if(data.Cases, [](const SCase& testCase) { return testCase.Result == ECaseRunResult::NoMatchingCase; });
    setLeak(data.Cases.back(), std::numeric_limits<std::int64_t>::min());
    return data;
}

SData MakeLaterReport()
{
    SData data;
    setMachine(data);
    data.DateBegin = L"2024-05-04 08:00:00";
    data.DateEnd = L"2024-05-04 08:01:00";
    data.Classes = {MakeReportClass(L"CDruck", 2, 0, 1), MakeReportClass(L"CLeser", 5, 0, 2),
                    MakeReportClass(L"CNetz", 2, 2), MakeReportClass(L"CNeu", 2, 0, 1)};
    data.Classes[1].ContactEMail = L"leser@example.org";

    const SCase cases[] = {
        makeCase(0, L"CDruck", L"hoch", ECaseRunResult::Error),
        makeCase(1, L"CDruck", L"Größe <A4> & \"A5\"", ECaseRunResult::Ok),
        makeCase(2, L"CLeser", L"leer.txt", ECaseRunResult::Ok),
        makeCase(3, L"CLeser", L"bricht ab", ECaseRunResult::Error),
        makeCase(4, L"CLeser", L"fehlt.txt", ECaseRunResult::NoInput),
        makeCase(5, L"CLeser", L"weicht ab", ECaseRunResult::Ok),
        makeCase(6, L"CLeser", L"voll.txt", ECaseRunResult::Ok),
        makeCase(7, L"CNetz", L"Absturz", ECaseRunResult::Unknown),
        makeCase(8, L"CNetz", L"hängt", ECaseRunResult::TimeOut),
        makeCase(9, L"CNeu", L"gut", ECaseRunResult::Ok),
        makeCase(10, L"CNeu", L"schlecht", ECaseRunResult::Error),
    };
    data.Cases.assign(std::begin(cases), std::end(cases));
    SetReportFigures(data);
    data.TimeTotal = 60.0F;
    return data;
}

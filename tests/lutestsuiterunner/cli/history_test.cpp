#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuiterunner/history/analysis/randomnumbers.h"
#include "testing/lutestsuiterunner/journal/folder.h"
#include "tests/lutestsuiterunner/cli/distributedtest.h"
#include "tests/lutestsuiterunner/samplerun.h"
#include "tests/support/unwritable.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;

constexpr std::uint32_t c_Runs = 40;
constexpr std::uint32_t c_Cases = 24;

/// The cases of the archive that have a change of their own. The other cases only have the changes that all cases have.
enum ECase : std::uint32_t
{
    eC_NewFailure,
    eC_Flaky,
    eC_Missing,
    eC_Slower,
    eC_Hungrier,
    eC_MoreAllocations,
    eC_Fixed,
    eC_Faster,
    eC_Leaner,
    eC_FewerAllocations,
    eC_New
};

Runner::SPlan makePlan(std::uint32_t run)
{
    Runner::SPlan plan;
    plan.runId = Runner::MakeRunId();
    plan.dataDirectory = LbPath::ToNative(L"/daten/");
    plan.params.trackHeap = true;
    plan.origin.buildConfiguration = L"Release x64";
    plan.origin.svn.emplace();
    plan.origin.svn->URL = L"svn://server/trunk";
    plan.origin.svn->Revision = LbFormat(L"%u", 4700 + run / 2);
    LuTestSuite::SUnitTest unitTest;
    unitTest.className = L"CKlasse";
    unitTest.dataDirectory = plan.dataDirectory + L"CKlasse" + LbPath::c_Separator;
    for (std::uint32_t index = 0; index < c_Cases; ++index)
    {
        const bool isAbsent = (index == eC_Missing && run + 1 == c_Runs) || (index == eC_New && run < 10);
        if (!isAbsent)
        {
            const std::wstring name = LbFormat(L"%02u", index);
            unitTest.cases.push_back({unitTest.dataDirectory + name, name, {}});
        }
    }
    plan.unitTests.push_back(std::move(unitTest));
    plan.cases = Runner::PlanCases(plan.unitTests, 1);
    return plan;
}

ECaseRunResult getResult(std::uint32_t index, std::uint32_t run)
{
    const bool hasFailed = (index == eC_NewFailure && run + 1 == c_Runs) || (index == eC_Flaky && run % 20 == 10) ||
                           (index == eC_Fixed && run >= 5 && run < 12);
    return hasFailed ? ECaseRunResult::Different : ECaseRunResult::Ok;
}

/// From the middle of the archive on, all times grow by half. In addition, the time of eC_Slower doubles and that of
/// eC_Faster halves, the memory of eC_Hungrier doubles and that of eC_Leaner halves. In the newest run,
/// eC_MoreAllocations makes one allocation more, and eC_FewerAllocations one less.
void measure(std::uint32_t index, std::uint32_t run, Runner::History::CRandomNumbers& random,
             LuTestSuiteRun::SCaseInfo& info)
{
    const bool isLate = run >= c_Runs / 2;
    const bool isNewest = run + 1 == c_Runs;
    info.time = (1'000'000 + random.Below(20'000)) * (isLate ? 3U : 2U);
    info.time *= index == eC_Slower && isLate ? 2U : 1U;
    info.time /= index == eC_Faster && isLate ? 2U : 1U;
    info.peakMemory = 100'000 + random.Below(2'000);
    info.peakMemory *= index == eC_Hungrier && isLate ? 2U : 1U;
    info.peakMemory /= index == eC_Leaner && isLate ? 2U : 1U;
    info.allocations = 1000;
    info.allocations += index == eC_MoreAllocations && isNewest ? 1U : 0U;
    info.allocations -= index == eC_FewerAllocations && isNewest ? 1U : 0U;
}

void writeRun(const std::wstring& folder, std::uint32_t run)
{
    const Runner::SPlan plan = makePlan(run);
    const auto writer = Runner::CRunFolder(folder).BeginRun(plan);
    Runner::History::CRandomNumbers random(run + 1);
    for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
    {
        const auto number = static_cast<std::uint32_t>(std::stoul(plan.unitTests[0].cases[index].name));
        Runner::SCaseEnded ended = MakeEnd(index, getResult(number, run));
        measure(number, run, random, ended.info);
        writer->Write(MakeStart(index));
        writer->Write(ended);
    }
    writer->Close();
}

struct SRule
{
    const char* name;
    const char* line; ///< names the case; printed if the gate does not hold
};

constexpr SRule c_Rules[] = {
    {"new-failures", "CKlasse:00 (seit Lauf 39)"},
    {"flaky", "CKlasse:01 (seit Lauf 10)"},
    {"quarantine", "CKlasse:01 (seit Lauf 10)"},
    {"missing", "CKlasse:02 (seit Lauf 39)"},
    {"slower", "CKlasse:03 (seit Lauf 20)"},
    {"hungrier", "CKlasse:04 (seit Lauf 20)"},
    {"more-allocations", "CKlasse:05 (seit Lauf 39)"},
    {"fixed", "CKlasse:06 (seit Lauf 12)"},
    {"faster", "CKlasse:07 (seit Lauf 20)"},
    {"leaner", "CKlasse:08 (seit Lauf 20)"},
    {"fewer-allocations", "CKlasse:09 (seit Lauf 39)"},
    {"new", "CKlasse:10 (seit Lauf 10)"},
    {"whole-slower", "alle Fälle, Release x64 (seit Lauf 20)"},
};

/// An option --gate for each rule, with `comparison` after the name of the rule.
std::vector<std::wstring> makeGates(const std::wstring& comparison)
{
    std::vector<std::wstring> options;
    for (const SRule& rule : c_Rules)
    {
        options.insert(options.end(), {L"--gate", LbEncoding::FromUtf8(rule.name) + comparison});
    }
    return options;
}

class RunnerHistory : public DistributedTest
{
protected:
    SHostRun history(const std::vector<std::wstring>& options = {}) const
    {
        std::vector<std::wstring> arguments = {L"history", getArchive()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunRunner(arguments);
    }

    std::wstring getArchive() const { return m_folder.GetPathOf(L"archiv"); }

    void writeArchive() const
    {
        for (std::uint32_t run = 0; run < c_Runs; ++run)
        {
            writeRun(getArchive() + LbPath::c_Separator + LbFormat(L"Lauf %02u", run), run);
        }
    }

    /// Sets the time of a file's last change.
    void setAge(const std::wstring& name, std::chrono::hours age) const
    {
        std::filesystem::last_write_time(getArchive() + LbPath::c_Separator + name,
                                         std::filesystem::file_time_type::clock::now() - age);
    }

    void writeReport(const std::wstring& name, const std::wstring& begin, const std::vector<std::wstring>& cases,
                     const std::wstring& configuration = L"Release x64") const
    {
        m_folder.MakeFolder(L"archiv");
        LuTestSuiteReport::SReportData data;
        data.BuildConfiguration = configuration;
        data.DateBegin = begin;
        for (const std::wstring& testCase : cases)
        {
            data.Cases.emplace_back();
            data.Cases.back().ClassName = L"CKlasse";
            data.Cases.back().CaseName = testCase;
        }
        LuTestSuiteReport::GenerateXMLReport(getArchive() + LbPath::c_Separator + name, data);
    }

    nlohmann::json readFindings(const std::wstring& directory) const
    {
        const std::wstring file = m_folder.GetPathOf(L"verlauf.json");
        const SHostRun run = RunRunner({L"history", directory, L"--json", file});
        EXPECT_EQ(run.exitStatus, 0) << run.errors;
        return nlohmann::json::parse(LbFileSystem::ReadFile8Bit(file)).at("configurations").at(0);
    }
};

TEST_F(RunnerHistory, PrintsTheCaseOfEachFailedGate)
{
    writeArchive();
    const SHostRun run = history(makeGates(L"=0"));

    EXPECT_EQ(run.exitStatus, 1) << run.errors;
    for (const SRule& rule : c_Rules)
    {
        ExpectLine(run.output, std::string(rule.name) + "=0: nicht erfüllt (gezählt: 1)\n  " + rule.line + "\n");
    }
}

TEST_F(RunnerHistory, ReturnsStatusZeroIfAllGatesHold)
{
    writeArchive();
    const SHostRun run = history(makeGates(L"<2"));

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    for (const SRule& rule : c_Rules)
    {
        ExpectLine(run.output, std::string(rule.name) + "<2: erfüllt (gezählt: 1)\n");
    }
}

TEST_F(RunnerHistory, FailsIfOneOfSeveralGatesFails)
{
    writeReport(L"a.xml", L"2026-01-01 00:00:00", {L"x", L"y"});
    writeReport(L"b.xml", L"2026-01-02 00:00:00", {L"x"});
    const SHostRun run = history({L"--gate", L"new-failures=0", L"--gate", L"missing=0", L"--gate", L"slower<5"});

    EXPECT_EQ(run.exitStatus, 1) << run.errors;
    ExpectLine(run.output, "missing=0: nicht erfüllt (gezählt: 1)\n  CKlasse:y (seit b.xml)\n");
}

TEST_F(RunnerHistory, RefusesInvalidGates)
{
    writeReport(L"a.xml", L"2026-01-01 00:00:00", {L"x"});
    for (const wchar_t* const rule : {L"slower>5", L"slower", L"slower=", L"slower=x", L"uglier=0", L"=0", L""})
    {
        const SHostRun run = history({L"--gate", rule});
        EXPECT_EQ(run.exitStatus, 2) << LbEncoding::ToUtf8(rule);
        ExpectLine(run.errors, "Die Bedingung '" + LbEncoding::ToUtf8(rule) + "'");
    }
}

TEST_F(RunnerHistory, RefusesAFolderThatIsEmptyOrMissing)
{
    m_folder.MakeFolder(L"archiv");
    const SHostRun empty = history();
    EXPECT_EQ(empty.exitStatus, 2);
    ExpectLine(empty.errors, "enthält keinen lesbaren Lauf");

    const SHostRun missing = RunRunner({L"history", m_folder.GetPathOf(L"fehlt")});
    EXPECT_EQ(missing.exitStatus, 2);
    ExpectLine(missing.errors, "existiert nicht");
}

TEST_F(RunnerHistory, WarnsOfADamagedReportAndEvaluatesTheOtherReports)
{
    writeReport(L"a.xml", L"2026-01-01 00:00:00", {L"x", L"y"});
    writeReport(L"c.xml", L"2026-01-03 00:00:00", {L"x"});
    m_folder.WriteFile(L"archiv/b.xml", "<testsuite><unfinished");
    setAge(L"b.xml", std::chrono::hours(1));
    const SHostRun run = history({L"--gate", L"missing=1"});

    EXPECT_EQ(run.exitStatus, 0) << run.output;
    ExpectLine(run.errors, "b.xml wurde nicht gelesen und fehlt in der Auswertung.\n");
    ExpectLine(run.output, "Release x64: 2 Läufe, im neuesten 1 Fall\n  Fehlende Fälle: 1\n");
}

TEST_F(RunnerHistory, FailsAllGatesIfTheNewestReportIsDamaged)
{
    writeReport(L"a.xml", L"2026-01-01 00:00:00", {L"x"});
    setAge(L"a.xml", std::chrono::hours(1));
    m_folder.WriteFile(L"archiv/b.xml", "<testsuite><unfinished");
    // The second call takes the damaged report from the index.
    for (int call = 0; call < 2; ++call)
    {
        const SHostRun run = history({L"--gate", L"new-failures=0"});
        EXPECT_EQ(run.exitStatus, 1) << run.errors;
        ExpectLine(run.output, "Fehler: b.xml ist nicht lesbar und vielleicht der neueste Lauf: "
                               "keine Bedingung ist erfüllt\nnew-failures=0: nicht erfüllt (gezählt: 0)\n");
    }
    const std::wstring json = m_folder.GetPathOf(L"verlauf.json");
    history({L"--json", json});
    EXPECT_EQ(nlohmann::json::parse(LbFileSystem::ReadFile8Bit(json))["unreadable"], nlohmann::json({"b.xml"}));
    EXPECT_EQ(history().exitStatus, 0);
}

TEST_F(RunnerHistory, FailsAllGatesIfADamagedReportMayBeTheNewestOfAConfiguration)
{
    writeReport(L"a.xml", L"2026-01-01 00:00:00", {L"x"});
    writeReport(L"c.xml", L"2026-01-03 00:00:00", {L"x"}, L"Debug x64");
    m_folder.WriteFile(L"archiv/b.xml", "<testsuite><unfinished");
    setAge(L"a.xml", std::chrono::hours(2));
    setAge(L"b.xml", std::chrono::hours(1));

    EXPECT_EQ(history({L"--gate", L"missing=0"}).exitStatus, 1);
}

TEST_F(RunnerHistory, EvaluatesOnlyTheNamedConfigurations)
{
    writeReport(L"a.xml", L"2026-01-01 00:00:00", {L"x", L"y"}, L"Debug x64");
    writeReport(L"b.xml", L"2026-01-02 00:00:00", {L"x"}, L"Debug x64");
    setAge(L"a.xml", std::chrono::hours(4));
    setAge(L"b.xml", std::chrono::hours(3));
    m_folder.WriteFile(L"archiv/c.xml", "<testsuite><unfinished");
    setAge(L"c.xml", std::chrono::hours(2));
    writeReport(L"d.xml", L"2026-01-03 00:00:00", {L"x"});
    writeReport(L"e.xml", L"2026-01-04 00:00:00", {L"x"}, L"Tests x64");

    EXPECT_EQ(history({L"--gate", L"missing=0"}).exitStatus, 1);
    const SHostRun run = history({L"--gate", L"missing=0", L"--configuration", L"Release x64"});
    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    EXPECT_EQ(FromPlatformLines(run.output),
              "Release x64: 1 Lauf, im neuesten 1 Fall\nmissing=0: erfüllt (gezählt: 0)\n");
    const SHostRun both =
        history({L"--gate", L"missing=0", L"--configuration", L"Release x64", L"--configuration", L"Debug x64"});
    EXPECT_EQ(both.exitStatus, 1);
    ExpectLine(both.output, "missing=0: nicht erfüllt (gezählt: 1)\n  CKlasse:y (seit b.xml, Debug x64)\n");
}

TEST_F(RunnerHistory, ListsTheKnownConfigurationsIfTheGivenOneIsUnknown)
{
    writeReport(L"a.xml", L"2026-01-01 00:00:00", {L"x"});
    writeReport(L"b.xml", L"2026-01-02 00:00:00", {L"x"}, L"Debug x64");
    const SHostRun run = history({L"--configuration", L"Release"});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "Kein Lauf des Archivs hat die Konfiguration 'Release'; "
                           "bekannt sind 'Debug x64', 'Release x64'\n");
}

TEST_F(RunnerHistory, CountsCasesThatTheNewestRunDidNotExecute)
{
    writeArchive();
    const Runner::SPlan plan = makePlan(c_Runs);
    const auto writer = Runner::CRunFolder(getArchive() + LbPath::c_Separator + L"Lauf 99").BeginRun(plan);
    writer->Write(MakeStart(0));
    writer->Write(MakeEnd(0, ECaseRunResult::Ok));
    writer->Close();
    const SHostRun run = history({L"--gate", L"not-run=0"});

    EXPECT_EQ(run.exitStatus, 1) << run.errors;
    ExpectLine(run.output, "not-run=0: nicht erfüllt (gezählt: 23)\n  CKlasse:01 (seit Lauf 99)\n");
}

TEST_F(RunnerHistory, ShowsTheOutcomesOfACaseInAllRuns)
{
    writeReport(L"a.xml", L"2026-01-01 00:00:00", {L"x", L"y"});
    writeReport(L"b.xml", L"2026-01-02 00:00:00", {L"x"});
    const SHostRun run = history({L"--case", L"CKlasse:y", L"--json", m_folder.GetPathOf(L"verlauf.json")});

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    ExpectLine(run.output, "CKlasse:y, Release x64\n     1  2026-01-01 00:00:00  bestanden  ");
    ExpectLine(run.output, "\n     2  2026-01-02 00:00:00  nicht dabei  ");
    const std::string json = LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"verlauf.json"));
    EXPECT_EQ(nlohmann::json::parse(json).at("configurations")[0].at("cases")[0].at("outcomes"), "P-");
}

TEST_F(RunnerHistory, RefusesACaseThatNoRunContains)
{
    writeReport(L"a.xml", L"2026-01-01 00:00:00", {L"x"});
    const SHostRun run = history({L"--case", L"CKlasse:z"});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "Kein Lauf des Archivs enthält den Testfall 'CKlasse:z'");
}

TEST_F(RunnerHistory, FailsIfAnOutputFileCannotBeWritten)
{
    writeReport(L"a.xml", L"2026-01-01 00:00:00", {L"x"});
    for (const SUnwritablePlace& place : GetUnwritablePlaces(m_folder, L"verlauf.html"))
    {
        // A command line of Windows has at most 32,767 characters.
        if (LbOs::c_PathSeparator == L'\\' && place.path.size() > 32'000)
        {
            continue;
        }
        for (const wchar_t* const option : {L"--html", L"--json"})
        {
            const SHostRun run = history({option, place.path});
            EXPECT_EQ(run.exitStatus, 2) << place.name;
            ExpectLine(run.errors, "Fehler: ");
        }
    }
}

TEST_F(RunnerHistory, ReadsTheJournalsOfDistributedRuns)
{
    m_folder.MakeFolder(L"data/CFlakyModel");
    MakeDurations({1, 1, 1});
    const std::wstring first = getArchive() + LbPath::c_Separator + L"eins";
    const SHostRun run = Run({L"submit", L"--out", first, L"--shards", L"2", L"--retries", L"1", L"--allow-flaky"},
                             {L"-i", L":besteht beim zweiten Mal$", L"-i", L"CDurationModel"});
    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;

    for (const std::wstring& folder : {getArchive(), first})
    {
        const nlohmann::json configuration = readFindings(folder);
        ASSERT_EQ(configuration.at("runs").size(), 1U);
        EXPECT_EQ(configuration.at("runs")[0].at("cases"), 4);
        EXPECT_EQ(configuration.at("runs")[0].at("failed"), 0);
        // The report contains only the attempt that passed.
        EXPECT_EQ(configuration.at("findings").at("flaky").size(), 1U);
    }
}

} // namespace

#include "testing/lutestsuiterunner/reports/reports.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "base/lbfilesystem.h"
#include "testing/lutestsuiterunner/reports/runreport.h"
#include "testing/lutestsuiterunner/reports/summary.h"
#include "tests/lutestsuiterunner/runstatemaker.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using nlohmann::json;

/// A run with a flaky, a failed, a missing and a passed case, a failure in quarantine, and a case outside the shard.
CRunStateMaker makeMixedRun()
{
    Runner::SPlan plan = MakeSamplePlan();
    plan.cases[4].isQuarantined = true;
    plan.cases[5].isInShard = false;
    CRunStateMaker run(plan);
    run.RunCase(0, ECaseRunResult::Error);
    run.RunCase(0, ECaseRunResult::Ok, 2, Runner::EAttemptKind::Retry);
    run.RunCase(1, ECaseRunResult::Different);
    run.RunCase(3, ECaseRunResult::Ok);
    run.RunCase(4, ECaseRunResult::Error);
    return run;
}

TEST(RunnerSummary, ListsFlakyFailedQuarantinedAndMissingCases)
{
    const CRunStateMaker run = makeMixedRun();
    const json summary = json::parse(Runner::MakeSummary(run.Get()));

    EXPECT_EQ(summary["green"], false);
    EXPECT_EQ(summary["state"], "incomplete");
    EXPECT_EQ(summary["counts"]["planned"], 5);
    EXPECT_EQ(summary["counts"]["passed"], 1);
    EXPECT_EQ(summary["counts"]["quarantinedFailed"], 1);
    ASSERT_EQ(summary["cases"].size(), 3U);
    EXPECT_EQ(summary["cases"][0]["verdict"], "flaky");
    EXPECT_EQ(summary["cases"][0]["attempts"], 2);
    EXPECT_EQ(summary["cases"][1]["result"], "different");
    EXPECT_EQ(summary["cases"][1]["folder"], "a/CFirst");
    EXPECT_EQ(summary["cases"][1]["messages"], "ERROR: Erwartet war 1\nINFO:  Datei x\n");
    EXPECT_EQ(summary["cases"][2]["quarantined"], true);
    ASSERT_EQ(summary["missing"].size(), 1U);
    EXPECT_EQ(summary["missing"][0]["name"], "eins.txt");
    EXPECT_EQ(summary["slowest"].size(), 4U);
}

TEST(RunnerSummary, CountsPassedCasesWithASkipMessage)
{
    Runner::SPlan plan = MakeSamplePlan();
    plan.cases[1].isQuarantined = true;
    CRunStateMaker run(plan);
    for (const std::uint32_t index : {0U, 1U})
    {
        Runner::SCaseEnded ended = MakeEnd(index, ECaseRunResult::Ok);
        ended.info.messages = L"INFO:  Übersprungen: keine Lizenz\n";
        run.RunCase(ended);
    }
    run.RunRest();
    const json summary = json::parse(Runner::MakeSummary(run.Get()));

    EXPECT_EQ(summary["counts"]["skipped"], 1);
    EXPECT_EQ(summary["counts"]["passed"], 5);
    EXPECT_EQ(summary["cases"].size(), 0U);
}

TEST(RunnerSummary, ShowsHowTheRunEnded)
{
    CRunStateMaker run;
    run.RunRest();
    const json ended = json::parse(Runner::MakeSummary(run.Get()));
    EXPECT_EQ(ended["state"], "ended");
    EXPECT_EQ(ended["green"], true);
    EXPECT_EQ(ended["seconds"], 4.0);
    EXPECT_EQ(ended["end"], "2024-01-02 03:04:09");

    run.BeginJournal(2);
    run.Apply(Runner::SRunCanceled{L"SIGTERM", 1});
    const json canceled = json::parse(Runner::MakeSummary(run.Get()));
    EXPECT_EQ(canceled["state"], "canceled");
    EXPECT_EQ(canceled["cancelReason"], "SIGTERM");
}

TEST(RunnerSummary, NamesTheReasonOfARedRunInTheProblems)
{
    const auto getProblems = [](const CRunStateMaker& run) {
        return json::parse(Runner::MakeSummary(run.Get()))["problems"];
    };
    CRunStateMaker run;
    EXPECT_EQ(getProblems(run), json({"Der Lauf ist nicht beendet"}));
    run.Apply(Runner::SRunProblem{L"Das Modul fehlt"});
    run.Apply(Runner::SRunCanceled{L"SIGTERM", 1});
    EXPECT_EQ(getProblems(run), json({"Der Lauf wurde abgebrochen: SIGTERM", "Das Modul fehlt"}));
    run.BeginJournal(2);
    run.Apply(Runner::SRunFinished{L"2024-01-02 03:04:09", 4});
    EXPECT_EQ(getProblems(run), json({"6 Testfälle haben kein Ergebnis"}));

    run.BeginJournal(3);
    run.RunCase(0, ECaseRunResult::Error);
    run.RunCase(0, ECaseRunResult::Ok, 2, Runner::EAttemptKind::Retry);
    run.RunRest();
    EXPECT_EQ(getProblems(run), json({"Ein Testfall ist unzuverlässig; ohne '--allow-flaky' ist der Lauf rot"}));
    CRunStateMaker green;
    green.RunRest();
    EXPECT_EQ(getProblems(green), json::array());
}

TEST(RunnerSummary, ListsACaseThatRanUntilTheCancellation)
{
    CRunStateMaker run;
    Runner::SCaseEnded ended = MakeEnd(0, ECaseRunResult::Error);
    ended.end = Runner::EAttemptEnd::Canceled;
    ended.info.time = 4'000'000'000;
    run.RunCase(ended);
    Runner::SOpenCases open;
    open.canceled = {0};

    const json summary = json::parse(Runner::MakeSummary(run.Get(), {}, open));

    ASSERT_EQ(summary["open"].size(), 1U);
    EXPECT_EQ(summary["open"][0]["name"], "eins.txt");
    EXPECT_EQ(summary["open"][0]["interrupted"], true);
    EXPECT_EQ(summary["open"][0]["canceled"], true);
    EXPECT_EQ(summary["open"][0]["seconds"], 4.0);
    EXPECT_EQ(summary["missing"].size(), 6U);
}

TEST(RunnerSummary, ListsRunningAndInterruptedCases)
{
    CRunStateMaker run;
    run.Apply(MakeStart(0));
    run.Apply(MakeStart(1));
    Runner::SOpenCases open;
    open.interrupted = {{1U, L"Fehler: nur ein Test\n"}};
    open.running = {0};
    json summary = json::parse(Runner::MakeSummary(run.Get(), {}, open));
    for (json& one : summary["open"])
    {
        one.erase("file"); // depends on the platform
    }

    EXPECT_EQ(summary["open"],
              json::parse(R"([{"folder": "a/CFirst", "class": "CFirst", "name": "zwei.txt", "attempt": 1,
                               "interrupted": true, "hostMessages": "Fehler: nur ein Test\n"},
                              {"folder": "a/CFirst", "class": "CFirst", "name": "eins.txt", "attempt": 1,
                               "interrupted": false}])"));
    EXPECT_EQ(summary["missing"].size(), 6U);
}

/// One class with this number of cases in one process. The last case fails there, and passes in a process of its own.
CRunStateMaker makeSharedRun(std::uint32_t count)
{
    Runner::SPlan plan = MakeSamplePlan();
    plan.unitTests.resize(1);
    plan.unitTests[0].cases.clear();
    for (std::uint32_t number = 1; number <= count; ++number)
    {
        plan.unitTests[0].cases.emplace_back().name = L"Fall " + std::to_wstring(number);
    }
    plan.cases = Runner::PlanCases(plan.unitTests, 1);
    CRunStateMaker run(plan);
    for (std::uint32_t index = 0; index + 1 < count; ++index)
    {
        run.RunCase(index, ECaseRunResult::Ok);
    }
    run.RunCase(count - 1, ECaseRunResult::Error);
    run.RunCase(count - 1, ECaseRunResult::Ok, 2, Runner::EAttemptKind::Confirm);
    run.RunRest();
    return run;
}

TEST(RunnerReports, ListAllCasesBeforeAFailureInASharedProcess)
{
    const CRunStateMaker run = makeSharedRun(13);
    const ScopedFolder folder;
    Runner::WriteReports(folder.GetPath(), run.Get());

    std::string lines;
    for (int number = 1; number <= 13; ++number)
    {
        lines += "a/CFirst:Fall " + std::to_string(number) + "\n";
    }
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(folder.GetPathOf(L"output/process-1.txt")), lines);
    EXPECT_NE(LbFileSystem::ReadFile8Bit(folder.GetPathOf(L"junit.xml"))
                  .find("  alle: die ersten 12 Zeilen von output/process-1.txt\n"),
              std::string::npos);
    const json summary = json::parse(LbFileSystem::ReadFile8Bit(folder.GetPathOf(L"summary.json")));
    EXPECT_EQ(summary["cases"][0]["predecessors"], json::parse(R"({"count": 12, "file": "output/process-1.txt"})"));
}

TEST(RunnerReports, HaveNoFileOfEarlierCasesIfTheTextsNameAllOfThem)
{
    const CRunStateMaker run = makeSharedRun(6);
    const ScopedFolder folder;
    Runner::WriteReports(folder.GetPath(), run.Get());

    EXPECT_FALSE(LbFileSystem::Exists(folder.GetPathOf(L"output")));
    const json summary = json::parse(LbFileSystem::ReadFile8Bit(folder.GetPathOf(L"summary.json")));
    EXPECT_EQ(summary["cases"][0]["predecessors"], json::parse(R"({"count": 5})"));
}

TEST(RunnerRunReport, ContainsTheClassesAndExecutedCasesOfTheShard)
{
    const CRunStateMaker run = makeMixedRun();
    const LuTestSuiteReport::SReportData data = Runner::MakeReportData(run.Get());

    EXPECT_EQ(data.CasesTotal, 4U);
    EXPECT_EQ(data.Successful, 2U);
    EXPECT_EQ(data.MachineName, L"Rechner");
    EXPECT_EQ(data.DateBegin, L"2024-01-02 03:04:05");
    ASSERT_EQ(data.Classes.size(), 3U);
    EXPECT_EQ(data.Classes[0].ContactName, L"Erika Mustermann");
    EXPECT_EQ(data.Classes[2].CasesTotal, 2U);
    ASSERT_EQ(data.Cases.size(), 4U);
    EXPECT_EQ(data.Cases[2].CaseName, L"x.dat");
    EXPECT_EQ(data.Cases[2].Id, 3U);
}

TEST(RunnerRunReport, AddsNotesToFlakyAndQuarantinedCases)
{
    const CRunStateMaker run = makeMixedRun();
    const LuTestSuiteReport::SReportData data = Runner::MakeReportData(run.Get());

    ASSERT_EQ(data.Cases[0].Dumps.size(), 3U);
    EXPECT_FALSE(data.Cases[0].Dumps[0].IsError);
    EXPECT_EQ(data.Cases[0].Dumps[0].Text, L"Unzuverlässig: erst beim 2. Versuch bestanden");
    ASSERT_EQ(data.Cases[3].Dumps.size(), 3U);
    EXPECT_TRUE(data.Cases[3].Dumps[0].IsError);
    EXPECT_EQ(data.Cases[3].Dumps[2].Text, L"In Quarantäne");
}

TEST(RunnerReports, HaveTheSameBytesWhenTheyAreMadeAgain)
{
    const CRunStateMaker run = makeMixedRun();
    const ScopedFolder folder;
    std::vector<std::string> contents[2];
    for (std::vector<std::string>& content : contents)
    {
        Runner::WriteReports(folder.GetPath(), run.Get());
        for (const std::wstring& name : LbFileSystem::GetFileNames(folder.GetPath()))
        {
            content.push_back(LbFileSystem::ReadFile8Bit(folder.GetPathOf(name)));
        }
    }

    EXPECT_EQ(contents[0], contents[1]);
    for (const wchar_t* const name : {L"report.xml", L"report.html", L"junit.xml", L"summary.json"})
    {
        EXPECT_TRUE(LbFileSystem::IsFile(folder.GetPathOf(name)));
    }
}

} // namespace

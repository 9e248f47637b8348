#include "testing/lutestsuiterunner/console/closing.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbpath.h"
#include "tests/lutestsuiterunner/runstatemaker.h"
#include "tests/support/scopedfolder.h"

namespace
{

TEST(RunnerClosing, QuotesArgumentsForTheShellOfThePlatform)
{
    const bool isWindows = LbPath::c_Separator == L'\\';

    EXPECT_EQ(Runner::QuoteForShell(L"--out=a/b.txt"), L"--out=a/b.txt");
    EXPECT_EQ(Runner::QuoteForShell(L""), isWindows ? L"\"\"" : L"''");
    EXPECT_EQ(Runner::QuoteForShell(L"mit Lücke"), isWindows ? L"\"mit Lücke\"" : L"'mit Lücke'");
    EXPECT_EQ(Runner::QuoteForShell(L":fall$"), isWindows ? L"\":fall$\"" : L"':fall$'");
    EXPECT_EQ(Runner::QuoteForShell(L"C:\\x"), isWindows ? L"C:\\x" : L"'C:\\x'");
    EXPECT_EQ(Runner::QuoteForShell(L"it's"), isWindows ? L"\"it's\"" : L"'it'\\''s'");
}

/// The command that repeats the failed cases of a run with these arguments.
std::wstring GetRepetition(const std::wstring& folder, const std::vector<std::wstring>& arguments,
                           const std::wstring& workingDirectory = L"/arbeit/")
{
    Runner::SPlan plan = MakeSamplePlan();
    plan.arguments = arguments;
    plan.workingDirectory = workingDirectory;
    CRunStateMaker run(plan);
    run.RunCase(0, LuTestSuiteRun::ECaseRunResult::Error);
    const std::wstring text = Runner::DescribeClosing(run.Get(), folder);
    return text.substr(text.find(L" run --previous "));
}

TEST(RunnerClosing, KeepsTheQuarantineInTheRepeatCommand)
{
    const ScopedFolder folder;
    const auto contains = [&folder](const std::vector<std::wstring>& arguments, const std::wstring& words) {
        return GetRepetition(folder.GetPathOf(L"out/"), arguments).find(words) != std::wstring::npos;
    };

    const std::wstring file = folder.WriteFile(L"q.txt", "");
    const std::wstring quoted = Runner::QuoteForShell(file);

    EXPECT_TRUE(contains({L"run", L"--quarantine", L"alt.txt", L"--quarantine", file, L"--", L"-d", L"Daten"},
                         L" --force --quarantine " + quoted + L" -- -d Daten -s\n"));
    EXPECT_TRUE(contains({L"run", L"--quarantine=" + file, L"--", L"-d", L"Daten"},
                         L" --force " + Runner::QuoteForShell(L"--quarantine=" + file) + L" -- -d Daten -s\n"));
    // The repeat command would fail with a file that is gone.
    EXPECT_TRUE(
        contains({L"run", L"--quarantine", file, L"--quarantine", folder.GetPathOf(L"weg.txt"), L"--", L"-d", L"Daten"},
                 L" --force -- -d Daten -s\n"));
    EXPECT_TRUE(contains({L"run", L"--", L"-d", L"Daten"}, L" --force -- -d Daten -s\n"));
}

TEST(RunnerClosing, SearchesTheQuarantineInTheWorkingDirectoryOfTheRun)
{
    const ScopedFolder folder;
    folder.WriteFile(L"listen/q.txt", "");
    const std::vector<std::wstring> arguments = {L"run", L"--quarantine", L"listen/q.txt", L"--", L"-d", L"Daten"};
    const std::wstring words = L" --quarantine listen/q.txt ";

    EXPECT_NE(GetRepetition(L"/out/", arguments, folder.GetPath()).find(words), std::wstring::npos);
    EXPECT_EQ(GetRepetition(L"/out/", arguments).find(words), std::wstring::npos);
}

TEST(RunnerClosing, NamesTheFileThatListsAllCasesBeforeASharedFailure)
{
    using LuTestSuiteRun::ECaseRunResult;
    CRunStateMaker run(MakeSamplePlan(2));
    // Leaves out cases 2 and 3, the repetitions of a case whose description asks for a process of its own.
    for (const std::uint32_t index : {0U, 1U, 4U, 5U, 6U, 7U})
    {
        run.RunCase(index, ECaseRunResult::Ok);
    }
    run.RunCase(8, ECaseRunResult::Error);
    run.RunCase(8, ECaseRunResult::Ok, 2, Runner::EAttemptKind::Confirm);

    const std::wstring text = Runner::DescribeClosing(run.Get(), LbPath::ToNative(L"/lauf/"));

    EXPECT_NE(text.find(L" und 1 Testfälle davor; alle: die ersten 6 Zeilen von " +
                        LbPath::ToNative(L"/lauf/output/process-1.txt") + L")\n"),
              std::wstring::npos)
        << text.size();
}

TEST(RunnerClosing, RepeatsFailedCasesIntoANewFolder)
{
    const ScopedFolder folder;
    const std::vector<std::wstring> arguments = {L"run", L"--", L"-d", L"Daten"};
    const std::wstring out = folder.GetPathOf(L"out/");
    EXPECT_NE(GetRepetition(out, arguments).find(L"out-wiederholt --force"), std::wstring::npos);
    folder.MakeFolder(L"out-wiederholt");

    EXPECT_NE(GetRepetition(out, arguments).find(L"out-wiederholt-2 --force"), std::wstring::npos);
}

} // namespace

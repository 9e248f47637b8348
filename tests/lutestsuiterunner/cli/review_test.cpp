#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbreceivedfile.h"
#include "base/lbuniqueid.h"
#include "tests/lutestsuiterunner/cli/runnertest.h"
#include "tests/support/scopedenvironment.h"

namespace
{

class RunnerReview : public RunnerTest
{
protected:
    SHostRun Review(std::vector<std::wstring> options = {}) const
    {
        options.insert(options.begin(), {L"review", m_folder.GetPathOf(L"data")});
        return RunRunner(options);
    }

    /// A difference that `runs` runs have made.
    void Receive(const std::wstring& name, const std::string& received, int runs = 3) const
    {
        for (int run = 0; run < runs; ++run)
        {
            const ScopedEnvironmentVariable variable(LbReceivedFile::c_RunVariable, LbUniqueId::Generate());
            LbReceivedFile::Compare(received, m_folder.GetPathOf(L"data/" + name), true);
        }
    }

    void Write(const std::wstring& name, const std::string& bytes) const { m_folder.WriteFile(L"data/" + name, bytes); }

    std::string Read(const std::wstring& name) const
    {
        return LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"data/" + name));
    }

    bool Holds(const std::wstring& name) const { return LbFileSystem::IsFile(m_folder.GetPathOf(L"data/" + name)); }
};

TEST_F(RunnerReview, HasNothingToShowWithoutDifferences)
{
    const SHostRun run = Review();

    ExpectLine(run.output, "Änderungen: 0, Dateien: 0\n");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(RunnerReview, ShowsEqualChangesOnce)
{
    for (int number = 0; number < 20; ++number)
    {
        const std::wstring name = LbFormat(L"CFall/%02d.txt", number);
        const std::string own = std::to_string(number) + "\n";
        Write(name, own + "alt\n");
        Receive(name, own + (number % 2 == 0 ? "neu\n" : "anders\n"));
    }

    const SHostRun run = Review();

    ExpectLine(run.output, "Änderungen: 2, Dateien: 20\n");
    ExpectLine(run.output, "  10 Dateien: CFall");
    ExpectLine(run.output, "    -alt\n    +neu\n");
    EXPECT_EQ(run.output.find('\x1b'), std::string::npos);
}

TEST_F(RunnerReview, ShowsDifferences)
{
    Write(L"a", "eins\nalt\n");
    Receive(L"a", "eins\nneu\n");

    ExpectLine(Review({L"--diff"}).output, "  ab Zeile 2\n    -alt\n    +neu\n");
    ExpectLine(Review({L"--side-by-side"}).output, "| neu\n");
}

TEST_F(RunnerReview, AcceptsAllChanges)
{
    Write(L"a", "alt");
    Receive(L"a", "neu");
    Receive(L"b", "dazu");

    const SHostRun run = Review({L"--accept", L"all"});

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    ExpectLine(run.output, "Übernommen: ");
    EXPECT_EQ(Read(L"a"), "neu");
    EXPECT_EQ(Read(L"b"), "dazu");
    ExpectLine(Review().output, "Änderungen: 0, Dateien: 0\n");
}

TEST_F(RunnerReview, AcceptsOneChangeByItsName)
{
    Write(L"a", "alt");
    Receive(L"a", "neu");
    Write(L"b", "alt");
    Receive(L"b", "neu");
    Write(L"c", "alt");
    Receive(L"c", "anders");
    const std::string output = FromPlatformLines(Review().output);
    const std::string name = output.substr(0, output.find(' '));

    Review({L"--accept", std::wstring(name.begin(), name.end())});

    EXPECT_EQ(Read(L"a"), "neu");
    EXPECT_EQ(Read(L"b"), "neu");
    EXPECT_EQ(Read(L"c"), "alt");
}

TEST_F(RunnerReview, AcceptsAndRejectsSingleFiles)
{
    for (const wchar_t* name : {L"a", L"b", L"c"})
    {
        Write(name, "alt");
        Receive(name, "neu");
    }

    Review({L"--accept", m_folder.GetPathOf(L"data/a"), L"--reject", m_folder.GetPathOf(L"data/b.received")});

    EXPECT_EQ(Read(L"a"), "neu");
    EXPECT_EQ(Read(L"b"), "alt");
    EXPECT_FALSE(Holds(L"b.received"));
    EXPECT_TRUE(Holds(L"c.received"));
}

TEST_F(RunnerReview, RefusesUnknownNames)
{
    const SHostRun run = Review({L"--accept", L"fehlt"});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "Fehler: 'fehlt' ist weder 'all'");
}

TEST_F(RunnerReview, AcceptsOnlyWhatThreeRunsRepeat)
{
    Write(L"a", "alt");
    Receive(L"a", "neu", 2);
    Write(L"b", "alt");
    Receive(L"b", "neu", 3);

    const SHostRun refused = Review({L"--accept", L"all"});

    EXPECT_EQ(refused.exitStatus, 2);
    ExpectLine(refused.errors, "noch nicht in 3 Läufen gleich");
    EXPECT_EQ(Read(L"b"), "alt");
    Receive(L"a", "neu", 1);
    EXPECT_EQ(Review({L"--accept", L"all"}).exitStatus, 0);
    EXPECT_EQ(Read(L"a"), "neu");
}

TEST_F(RunnerReview, CountsRunsAndNotTheirRepetitions)
{
    Write(L"CReferenceModel/a.txt", "neu");
    Write(L"CReferenceModel/a.txt.expected", "alt");
    const auto run = [this](const std::vector<std::wstring>& library) {
        SHostOptions options;
        options.variables = {{LbReceivedFile::c_RunVariable, L""}};
        Run({L"run", L"--force", L"--retries", L"2"}, library, options);
        return LbReceivedFile::CountRuns("neu", m_folder.GetPathOf(L"data/CReferenceModel/a.txt.expected"));
    };

    EXPECT_EQ(run({}), 1U);
    EXPECT_EQ(run({L"-x", L"-r", L"3"}), 2U) << "child processes";
    EXPECT_EQ(run({L"-r", L"3"}), 3U);
}

TEST_F(RunnerReview, EmptiesReferencesOnlyIfConfirmed)
{
    Write(L"a", "alt");
    Receive(L"a", "");

    const SHostRun refused = Review({L"--accept", L"all"});

    EXPECT_EQ(refused.exitStatus, 2);
    ExpectLine(refused.errors, "'--accept-empty'");
    EXPECT_EQ(Read(L"a"), "alt");
    EXPECT_EQ(Review({L"--accept", L"all", L"--accept-empty"}).exitStatus, 0);
    EXPECT_EQ(Read(L"a"), "");
}

TEST_F(RunnerReview, DecidesNothingOnABuildServer)
{
    Write(L"a", "alt");
    Receive(L"a", "neu");

    const SHostRun refused = Review({L"--ci", L"--accept", L"all"});

    EXPECT_EQ(refused.exitStatus, 2);
    ExpectLine(refused.errors, "Mit '--ci' wird nichts übernommen");
    EXPECT_EQ(Review({L"--ci"}).exitStatus, 1);
    EXPECT_EQ(Read(L"a"), "alt");
    Review({L"--reject", L"all"});
    EXPECT_EQ(Review({L"--ci"}).exitStatus, 0);
}

TEST_F(RunnerReview, NamesAFolderThatDoesNotExist)
{
    const SHostRun run = RunRunner({L"review", m_folder.GetPathOf(L"fehlt")});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "gibt es nicht");
}

TEST_F(RunnerReview, IsRecommendedByARunWithUndecidedDifferences)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    Receive(L"CPassedModel/a", "neu", 1);

    const SHostRun run = Run({L"run"});

    ExpectLine(run.errors, "Warnung: ");
    ExpectLine(run.errors, "a.received");
    ExpectLine(run.errors, "LuTestSuiteRunner review ");
    EXPECT_EQ(run.exitStatus, 0);
}

} // namespace

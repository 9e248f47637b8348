/// The option --fail-fast.

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "tests/lutestsuiterunner/cli/runnertest.h"

namespace
{

class RunnerFailFast : public RunnerTest
{
protected:
    /// The number of confirmations in the first journal.
    std::ptrdiff_t CountConfirmations() const
    {
        return std::ranges::count_if(
            ReadRecords(1), [](const nlohmann::json& record) { return record.value("kind", "") == "confirm"; });
    }
};

TEST_F(RunnerFailFast, EndsTheRunAtTheFirstFailure)
{
    m_folder.MakeFolder(L"data/CResultModel");

    const SHostRun run = Run({L"run", L"--fail-fast"});

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, "fehlgeschlagen: 1,");
    ExpectLine(run.output, "--fail-fast");
}

TEST_F(RunnerFailFast, TellsHowManyFailedCasesHaveRetriesLeft)
{
    m_folder.MakeFolder(L"data/CResultModel");

    const SHostRun run = Run({L"run", L"--fail-fast", L"--retries", L"1"},
                             {L"-i", L":fehlgeschlagen$", L"-i", L":abweichend$", L"-i", L":eigene Ausnahme$"});

    ExpectLine(run.output, "abgebrochen: nach einem fehlgeschlagenen Testfall (--fail-fast); 2 weitere wurden nicht "
                           "mehr wiederholt\n");
    ExpectLine(run.output, "fehlgeschlagen: 3,");
}

TEST_F(RunnerFailFast, DoesNotCancelTheRunIfTheLastCaseFails)
{
    m_folder.MakeFolder(L"data/CResultModel");

    const SHostRun run = Run({L"run", L"--fail-fast"}, {L"-i", L":bestanden$", L"-i", L":fehlgeschlagen$"});

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, "bestanden: 1, unzuverlässig: 0, fehlgeschlagen: 1, in Quarantäne: 0, nicht ausgeführt: 0");
    EXPECT_EQ(run.output.find("--fail-fast"), std::string::npos) << run.output;
    EXPECT_EQ(CountRecords("cancel", 1), 0U);
}

TEST_F(RunnerFailFast, ConfirmsTheFailureThatEndsTheRun)
{
    m_folder.MakeFolder(L"data/CSharedStateModel");
    m_folder.MakeFolder(L"data/CResultModel");

    const SHostRun run = Run({L"run", L"--fail-fast", L"--confirm", L"--order", L"listed"},
                             {L"-i", L"CSharedStateModel", L"-i", L":bestanden$", L"-i", L":fehlgeschlagen$"});

    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(CountRecords("cancel", 1), 1U);
    EXPECT_EQ(CountConfirmations(), 1);
}

TEST_F(RunnerFailFast, DoesNotConfirmFailuresWithRemainingRetries)
{
    m_folder.MakeFolder(L"data/CResultModel");

    Run({L"run", L"--fail-fast", L"--retries", L"1", L"--confirm"});

    // The first retry that fails ends the run. The other failed cases still have retries left, so they are not
    // confirmed.
    EXPECT_EQ(CountRecords("cancel", 1), 1U);
    EXPECT_EQ(CountConfirmations(), 1);
}

TEST_F(RunnerFailFast, WarnsThatItWaitsForRetries)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    const std::string warning = "Warnung: '--fail-fast' zählt einen Testfall erst nach seiner letzten Wiederholung;";
    const auto getErrors = [this](const std::vector<std::wstring>& options) {
        std::vector<std::wstring> own = {L"run", L"--force"};
        own.insert(own.end(), options.begin(), options.end());
        return Run(own).errors;
    };

    ExpectLine(getErrors({L"--fail-fast", L"--retries", L"1"}), warning);
    EXPECT_EQ(getErrors({L"--fail-fast"}).find(warning), std::string::npos);
    EXPECT_EQ(getErrors({L"--retries", L"1"}).find(warning), std::string::npos);
}

} // namespace

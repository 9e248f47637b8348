#include "testing/lutestsuiterunner/commands/outcome.h"

#include <optional>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/folder.h"
#include "tests/lutestsuiterunner/samplerun.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// A run that another process executes; the last of its cases is under way.
class RunnerOutcomeInProgress : public testing::Test
{
protected:
    RunnerOutcomeInProgress()
    {
        for (std::uint32_t index = 0; index < sc_Last; ++index)
        {
            m_writer->Write(MakeStart(index));
            m_writer->Write(MakeEnd(index, LuTestSuiteRun::ECaseRunResult::Ok));
        }
        m_writer->Write(MakeStart(sc_Last));
    }

    void EndRun()
    {
        m_writer->Write(MakeEnd(sc_Last, LuTestSuiteRun::ECaseRunResult::Ok));
        m_writer->Write(Runner::SRunFinished{L"2024-01-02 03:04:09", 5});
        Runner::ReportRun(m_path);
    }

    std::string ReadSummary() const { return LbFileSystem::ReadFile8Bit(m_path + Runner::c_SummaryName); }

    static constexpr std::uint32_t sc_Last = 5;

    const ScopedFolder m_folder;
    std::optional<Runner::CRunFolder> m_run{m_folder.GetPath()};
    const std::wstring m_path = m_run->GetPath();
    const std::unique_ptr<Runner::CJournalWriter> m_writer = m_run->BeginRun(MakeSamplePlan());
};

TEST_F(RunnerOutcomeInProgress, ShowsTheCasesUnderWay)
{
    const auto state = Runner::ReportRunInProgress(m_path);

    EXPECT_EQ(state->GetOpenCases(), std::vector<std::uint32_t>{sc_Last});
    EXPECT_NE(LbFileSystem::ReadFile8Bit(m_path + Runner::c_JunitName).find("Begonnen, noch nicht beendet"),
              std::string::npos);
}

TEST_F(RunnerOutcomeInProgress, IsFinalIfTheRunEndsMeanwhile)
{
    std::string atEnd;
    const auto state = Runner::ReportRunInProgress(m_path, [&](const std::wstring& folder) {
        auto loaded = Runner::LoadRun(folder);
        if (atEnd.empty())
        {
            EndRun();
            atEnd = ReadSummary();
        }
        return loaded;
    });

    EXPECT_TRUE(state->IsGreen());
    EXPECT_EQ(ReadSummary(), atEnd);
}

TEST_F(RunnerOutcomeInProgress, IsFinalIfACanceledRunEndsMeanwhileWithAnOpenCase)
{
    m_writer->Write(Runner::SRunCanceled{L"SIGTERM", 1});
    std::string atEnd;
    int loads = 0;
    const auto state = Runner::ReportRunInProgress(m_path, [&](const std::wstring& folder) {
        if (++loads == 2)
        {
            Runner::ReportRun(m_path);
            atEnd = ReadSummary();
            m_run.reset();
        }
        return Runner::LoadRun(folder);
    });

    EXPECT_FALSE(state->IsEnded());
    EXPECT_EQ(ReadSummary(), atEnd);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(m_path + Runner::c_JunitName).find("Begonnen, noch nicht beendet"),
              std::string::npos);
}

} // namespace

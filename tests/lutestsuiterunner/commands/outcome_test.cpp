#include "testing/lutestsuiterunner/commands/outcome.h"

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
        Runner::ReportRun(m_run.GetPath());
    }

    std::string ReadSummary() const { return LbFileSystem::ReadFile8Bit(m_run.GetPath() + Runner::c_SummaryName); }

    static constexpr std::uint32_t sc_Last = 5;

    const ScopedFolder m_folder;
    Runner::CRunFolder m_run{m_folder.GetPath()};
    const std::unique_ptr<Runner::CJournalWriter> m_writer = m_run.BeginRun(MakeSamplePlan());
};

TEST_F(RunnerOutcomeInProgress, ShowsTheCasesUnderWay)
{
    const auto state = Runner::ReportRunInProgress(m_run.GetPath());

    EXPECT_EQ(state->GetOpenCases(), std::vector<std::uint32_t>{sc_Last});
    EXPECT_NE(LbFileSystem::ReadFile8Bit(m_run.GetPath() + Runner::c_JunitName).find("Begonnen, noch nicht beendet"),
              std::string::npos);
}

TEST_F(RunnerOutcomeInProgress, IsThatOfTheEndIfTheRunEndsMeanwhile)
{
    std::string atEnd;
    const auto state = Runner::ReportRunInProgress(m_run.GetPath(), [&](const std::wstring& folder) {
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

} // namespace

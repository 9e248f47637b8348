/// An archive with one case for each of several findings.
#pragma once

#include <vector>

#include <gtest/gtest.h>

#include "testing/lutestsuiterunner/history/analysis/analysis.h"
#include "tests/support/syntheticruns.h"

namespace Runner::History
{

/// Case 0 fails with a message in the newest run, 59. Case 1 is flaky with one build. Case 2 is slower from run 40 on.
/// Case 3 is missing in the newest run, case 4 in runs 0 to 9. All indices begin at 0; reports count runs from 1.
class CFindingsArchive : public testing::Test
{
protected:
    CFindingsArchive()
    {
        SyntheticRuns::SSettings settings;
        settings.cases = 40;
        settings.runs = 60;
        settings.factor = [](std::size_t testCase, std::size_t run) { return testCase == 2 && run >= 40 ? 1.5 : 1.0; };
        settings.fails = [](std::size_t testCase, std::size_t run) {
            return (testCase == 0 && run == 59) || (testCase == 1 && run % 20 == 10);
        };
        m_archive = MakeArchive(settings);
        m_archive.names[0] = {L"CKlasse", L"<b>größer & \"mehr\"</b>"};
        for (SRun& run : m_archive.runs)
        {
            run.label.build = L"eins";
        }
        m_archive.runs[59].messages.push_back({0, L"Wert 4 < 5"});
        std::erase_if(m_archive.runs[59].cells, [](const SCell& cell) { return cell.caseIndex == 3; });
        for (std::size_t run = 0; run < 10; ++run)
        {
            std::erase_if(m_archive.runs[run].cells, [](const SCell& cell) { return cell.caseIndex == 4; });
        }
        m_analyses.push_back(Analyze(L"Release x64", m_archive.GetTable(), {}, AnalyzeSteps(m_archive.GetTable(), {})));
    }

    SyntheticRuns::SArchive m_archive;
    std::vector<SAnalysis> m_analyses;
};

} // namespace Runner::History

#include "testing/lutestsuiterunner/history/analysis/outcomes.h"

#include <gtest/gtest.h>

#include <vector>

#include "base/lbformat.h"

using namespace Runner::History;

namespace
{

/// The findings for one case. Each character of `signs` is the result of the case in one run: P passed, F failed,
/// C canceled, B failed and passed, - absent. Each character of `builds` names the build of one run; if `builds` is
/// empty, each run has its own build.
SOutcomeFindings findOutcomes(const std::string& signs, const std::string& builds = {})
{
    const std::vector<SCaseName> names = {{L"CKlasse", L"Fall"}};
    std::vector<SRun> runs(signs.size());
    for (std::size_t run = 0; run < signs.size(); ++run)
    {
        runs[run].label.build = builds.empty() ? LbFormat(L"%d", static_cast<int>(run)) : std::wstring(1, builds[run]);
        SCell cell;
        cell.measured.result = signs[run] == 'F'   ? ECaseRunResult::Different
                               : signs[run] == 'C' ? ECaseRunResult::Canceled
                                                   : ECaseRunResult::Ok;
        cell.measured.hasBoth = signs[run] == 'B';
        if (signs[run] != '-')
        {
            runs[run].cells.push_back(cell);
        }
    }
    std::vector<const SRun*> pointers;
    for (const SRun& run : runs)
    {
        pointers.push_back(&run);
    }
    return FindOutcomes(CTable(names, pointers), 0);
}

} // namespace

TEST(HistoryOutcomes, SteadyCasesHaveNoFindings)
{
    EXPECT_TRUE(findOutcomes("PPPPPP").IsEmpty());
    EXPECT_TRUE(findOutcomes("FFFFFF").IsEmpty());
    EXPECT_TRUE(findOutcomes("------").IsEmpty());
}

TEST(HistoryOutcomes, FailureAfterPassesIsNew)
{
    const SOutcomeFindings findings = findOutcomes("PPPPFF");
    ASSERT_TRUE(findings.newFailure);
    EXPECT_EQ(findings.newFailure->index, 4U);
    EXPECT_EQ(findings.newFailure->first, 4U);
    EXPECT_FALSE(findings.flaky);
}

TEST(HistoryOutcomes, RunsWithoutAnOutcomeWidenTheIntervalOfANewFailure)
{
    const SOutcomeFindings findings = findOutcomes("PP-CFF");
    ASSERT_TRUE(findings.newFailure);
    EXPECT_EQ(findings.newFailure->first, 2U);
    EXPECT_EQ(findings.newFailure->last, 4U);
}

TEST(HistoryOutcomes, CaseThatPassesAfterALongOrInitialFailureIsFixed)
{
    const SOutcomeFindings findings = findOutcomes("PFFFFPP");
    ASSERT_TRUE(findings.fixed);
    EXPECT_EQ(findings.fixed->index, 5U);
    EXPECT_FALSE(findings.flaky);
    EXPECT_TRUE(findOutcomes("FPPPP").fixed);
}

TEST(HistoryOutcomes, ShortFailureThatDisappearsIsFlaky)
{
    const SOutcomeFindings findings = findOutcomes("PPPFPPP");
    ASSERT_TRUE(findings.flaky);
    EXPECT_EQ(findings.flaky->returns, 1U);
    EXPECT_EQ(findings.flaky->failures, 1U);
    EXPECT_EQ(findings.flaky->runs, 7U);
    EXPECT_EQ(findings.flaky->beginning.index, 3U);
    EXPECT_FALSE(findings.flaky->isProven);
    EXPECT_FALSE(findings.fixed);
}

TEST(HistoryOutcomes, EachReturnToTheEarlierOutcomeIsCounted)
{
    const SOutcomeFindings findings = findOutcomes("PFPPFFPPPFP");
    ASSERT_TRUE(findings.flaky);
    EXPECT_EQ(findings.flaky->returns, 4U); // three short failures, and one short series of passes between failures
    EXPECT_EQ(findings.flaky->failures, 4U);
}

TEST(HistoryOutcomes, SingleFailureOfAFlakyCaseIsNotANewFailure)
{
    EXPECT_FALSE(findOutcomes("PPPPFPPPPFPPPPF").newFailure);
    EXPECT_FALSE(findOutcomes("FFFPFFFFPFFFFPF").newFailure);
}

TEST(HistoryOutcomes, SingleFailureAfterProofOfFlakinessIsNotANewFailure)
{
    EXPECT_FALSE(findOutcomes("PPPPFPPPPPPPPPF", "abcddefghijklmn").newFailure);
}

TEST(HistoryOutcomes, OneEarlierShortFailureDoesNotHideANewFailure)
{
    const SOutcomeFindings findings = findOutcomes("PPPPFPPPPPPPPPF");
    ASSERT_TRUE(findings.newFailure);
    EXPECT_EQ(findings.newFailure->index, 14U);
    EXPECT_TRUE(findOutcomes("PPPPFPF").newFailure);
}

TEST(HistoryOutcomes, FailureOfABuildThatPassedBeforeIsNew)
{
    EXPECT_TRUE(findOutcomes("PPPPPF", "abcdee").newFailure);
}

TEST(HistoryOutcomes, NewCaseThatFailsIsANewFailure)
{
    const SOutcomeFindings findings = findOutcomes("--CFF");
    ASSERT_TRUE(findings.newFailure);
    EXPECT_EQ(findings.newFailure->index, 3U);
    EXPECT_EQ(findings.newFailure->first, 2U);
    EXPECT_EQ(findings.newFailure->last, 3U);
    EXPECT_FALSE(findOutcomes("FFFF").newFailure);
}

TEST(HistoryOutcomes, FailureIsNewIfAllEarlierRunsWereCanceled)
{
    const SOutcomeFindings findings = findOutcomes("CCF");
    ASSERT_TRUE(findings.newFailure);
    EXPECT_EQ(findings.newFailure->index, 2U);
    EXPECT_EQ(findings.newFailure->first, 0U);
    EXPECT_FALSE(findOutcomes("FCF").newFailure);
    EXPECT_FALSE(findOutcomes("CCP").newFailure);
}

TEST(HistoryOutcomes, LongFailureOfAFlakyCaseIsNew)
{
    const SOutcomeFindings findings = findOutcomes("PPPPFPPPPFPPPPFFFFF");
    ASSERT_TRUE(findings.newFailure);
    EXPECT_EQ(findings.newFailure->index, 14U);
    EXPECT_TRUE(findings.flaky);
}

TEST(HistoryOutcomes, PassAndFailureOfOneBuildProveThatACaseIsFlaky)
{
    const SOutcomeFindings findings = findOutcomes("PPPFPPP", "aabbccd");
    ASSERT_TRUE(findings.flaky);
    EXPECT_TRUE(findings.flaky->isProven);
}

TEST(HistoryOutcomes, UnknownBuildsDoNotProveThatACaseIsFlaky)
{
    const SOutcomeFindings findings = [] {
        const std::vector<SCaseName> names = {{L"CKlasse", L"Fall"}};
        std::vector<SRun> runs(5);
        for (std::size_t run = 0; run < runs.size(); ++run)
        {
            SCell cell;
            cell.measured.result = run == 2 ? ECaseRunResult::Error : ECaseRunResult::Ok;
            runs[run].cells.push_back(cell);
        }
        return FindOutcomes(CTable(names, {&runs[0], &runs[1], &runs[2], &runs[3], &runs[4]}), 0);
    }();
    ASSERT_TRUE(findings.flaky);
    EXPECT_FALSE(findings.flaky->isProven);
}

TEST(HistoryOutcomes, LastingFailureIsNotFlakyDespitePassesOfTheSameBuild)
{
    const SOutcomeFindings findings = findOutcomes("PPPPFFFF", "aaaaaaaa");
    EXPECT_TRUE(findings.newFailure);
    EXPECT_FALSE(findings.flaky);
}

TEST(HistoryOutcomes, FailureAndPassInOneRunProveThatACaseIsFlaky)
{
    const SOutcomeFindings findings = findOutcomes("PPPPB");
    ASSERT_TRUE(findings.flaky);
    EXPECT_TRUE(findings.flaky->isProven);
}

TEST(HistoryOutcomes, CaseThatIsNotInTheNewestRunIsMissing)
{
    const SOutcomeFindings findings = findOutcomes("PPPP--");
    ASSERT_TRUE(findings.missing);
    EXPECT_EQ(findings.missing->index, 4U);
    EXPECT_FALSE(findOutcomes("PP--PP").missing);
}

TEST(HistoryOutcomes, MissingCaseIsNotANewFailure)
{
    const SOutcomeFindings findings = findOutcomes("PPPF--");
    EXPECT_TRUE(findings.missing);
    EXPECT_FALSE(findings.newFailure);
}

TEST(HistoryOutcomes, CanceledCaseIsNotMissing)
{
    EXPECT_FALSE(findOutcomes("PPPPC").missing);
}

TEST(HistoryOutcomes, CaseWithoutOutcomeInTheNewestRunCountsAsNotRun)
{
    const SOutcomeFindings findings = findOutcomes("PPPCC");
    ASSERT_TRUE(findings.notRun);
    EXPECT_EQ(findings.notRun->index, 4U);
    EXPECT_TRUE(findOutcomes("CCC").notRun);
    EXPECT_TRUE(findOutcomes("--C").notRun);
    EXPECT_FALSE(findOutcomes("PPCPP").notRun);
    EXPECT_FALSE(findOutcomes("PPCC-").notRun);
}

TEST(HistoryOutcomes, CaseThatAppearsAfterTheFirstRunsIsNew)
{
    const SOutcomeFindings findings = findOutcomes("---PPP");
    ASSERT_TRUE(findings.added);
    EXPECT_EQ(findings.added->index, 3U);
}

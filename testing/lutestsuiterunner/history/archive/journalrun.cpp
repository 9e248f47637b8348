/// Reads the runs of an archive from journals.

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuiterunner/history/archive/recordedrun.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "testing/lutestsuiterunner/reports/casenotes.h"

namespace Runner::History
{

namespace
{

/// The record of a planned case that did not run: a canceled case, so that it does not look like an unplanned one.
SRecordedCase makeCanceled(const SPlan& plan, std::uint32_t index)
{
    const LuTestSuite::SUnitTest& unitTest = plan.unitTests[plan.cases[index].unitTest];
    SRecordedCase recorded;
    recorded.className = unitTest.className;
    recorded.caseName = unitTest.cases[plan.cases[index].testCase].name;
    recorded.measured.result = ECaseRunResult::Canceled;
    return recorded;
}

SRecordedCase getCase(const CRunState& state, std::uint32_t index, const SAttempt& attempt)
{
    constexpr float c_SecondsPerNanosecond = 1e-9F;
    const SPlan& plan = state.GetPlan();
    const LuTestSuiteRun::SCaseInfo& info = attempt.result.info;
    SRecordedCase recorded = makeCanceled(plan, index);
    recorded.measured.result = info.result;
    // A case that fails only in the shared process depends on the cases before it; it is not flaky.
    recorded.measured.hasBoth = state.GetVerdict(index) == EVerdict::Flaky;
    recorded.measured.seconds = static_cast<float>(info.time) * c_SecondsPerNanosecond;
    recorded.measured.memory = info.peakMemory;
    if (GetParams(plan, index).trackHeap)
    {
        recorded.measured.allocations = info.allocations;
    }
    if (!attempt.HasPassed())
    {
        recorded.message = GetFailureLine(attempt);
    }
    return recorded;
}

template<typename T>
const T* toPointer(const std::optional<T>& value)
{
    return value ? &*value : nullptr;
}

void fill(const CRunState& state, SRecordedRun& run)
{
    const SOrigin& origin = state.GetPlan().origin;
    run.label.configuration = origin.buildConfiguration;
    run.label.build = GetBuildName(toPointer(origin.svn), toPointer(origin.pscm));
    run.label.machine = origin.machine;
    run.label.begin = state.GetStartTime();
    run.cases.clear();
    for (std::uint32_t index = 0; index < state.GetPlan().cases.size(); ++index)
    {
        if (const SAttempt* const attempt = state.GetReported(index))
        {
            run.cases.push_back(getCase(state, index, *attempt));
        }
        else if (state.GetPlan().cases[index].isInShard)
        {
            run.cases.push_back(makeCanceled(state.GetPlan(), index));
        }
    }
}

} // namespace

bool ReadJournals(const std::wstring& path, SRecordedRun& run)
{
    const std::wstring folder = LbPath::WithSeparator(path);
    try
    {
        fill(*LoadRun(folder), run);
        if (run.label.begin.empty())
        {
            LuTestSuiteOut::Write(L"Warnung: Der Lauf in %s hat nicht begonnen.\n", folder);
            return false;
        }
        return true;
    }
    catch (const LbException& exception)
    {
        LuTestSuiteOut::Write(L"Warnung: %s\n", exception.GetMessageText());
    }
    // The report contains less than the journals, but it is better than nothing.
    return LbFileSystem::IsFile(folder + c_XmlReportName) && ReadReport(folder + c_XmlReportName, run);
}

} // namespace Runner::History

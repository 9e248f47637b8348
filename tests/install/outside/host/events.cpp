#include "calls.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiterunevents.h"
#include "testing/lutestsuite/lutestsuitesetup.h"

namespace
{

/// Counts the events, and passes each to the operation of the base class, which does nothing.
class CCounter : public LuTestSuiteRun::IRunObserver
{
public:
    void OnPlanned(const LuTestSuiteRun::SRunPlanned& planned) override
    {
        IRunObserver::OnPlanned(planned);
        m_planned = planned.cases.size();
        m_attempt = planned.attempt;
    }
    void OnCaseStarted(const LuTestSuiteRun::SCaseStarted& started) override
    {
        IRunObserver::OnCaseStarted(started);
        ++m_started;
    }
    void OnCaseFinished(const LuTestSuiteRun::SCaseFinished& finished) override
    {
        IRunObserver::OnCaseFinished(finished);
        ++m_finished;
    }
    void OnCanceled() override
    {
        IRunObserver::OnCanceled();
        ++m_canceled;
    }
    void OnEnded(const LuTestSuiteRun::SRunResult& result) override
    {
        IRunObserver::OnEnded(result);
        ++m_ended;
    }

    std::size_t m_planned = 0;
    std::uint32_t m_attempt = 0;
    std::size_t m_started = 0;
    std::size_t m_finished = 0;
    std::size_t m_canceled = 0;
    std::size_t m_ended = 0;
};

} // namespace

void CallRunEvents(LuTestSuiteEnvironment& environment, const SPlaces& places)
{
    LuTestSuiteSetup setup;
    setup.dataDir = places.data;
    setup.includes = {L"/COutsideTest:"};
    CCounter counter;
    LuTestSuiteRun::SRunOptions options;
    options.attempt = 2;
    const LuTestSuiteRun::SRunResult result = LuTestSuiteRun::Run(setup, environment, counter, options);
    Expect(counter.m_planned == 2 && counter.m_attempt == 2, "IRunObserver::OnPlanned");
    Expect(counter.m_started == 2 && counter.m_finished == 2, "IRunObserver::OnCaseStarted and OnCaseFinished");
    Expect(counter.m_canceled == 0 && counter.m_ended == 1, "IRunObserver::OnEnded");
    const LuTestSuiteRun::SStats stats = LuTestSuiteRun::CountCases(result.cases, 1);
    Expect(stats.total.GetCount(LuTestSuiteRun::ECaseRunResult::Ok) == 2, "LuTestSuiteRun::CountCases");

    setup.checkCallback = [] { return true; };
    CCounter canceled;
    LuTestSuiteRun::Run(setup, environment, canceled);
    Expect(canceled.m_canceled == 1 && canceled.m_finished == 0, "IRunObserver::OnCanceled");

    const LuTestSuiteRun::SParams params =
        LuTestSuiteRun::GetCaseParams({}, {{L"TimeOutSec", LbVariant(std::uint32_t(3))}});
    Expect(params.timeOutSec == 3, "LuTestSuiteRun::GetCaseParams");
    Expect(LuTestSuiteRun::DescribeStacks({{7, true, {}}}).size() == 1, "LuTestSuiteRun::DescribeStacks");
}

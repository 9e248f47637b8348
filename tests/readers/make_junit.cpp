/// Writes the report of a made-up run for build servers: make_junit PATH COUNT. Case I of the COUNT cases has result I
/// modulo 9 and takes I ms; case 0 was skipped. Of three further cases, one is flaky, one fails in quarantine, and one
/// is disabled.

#include <cstdlib>
#include <string>

#include "base/lbencoding.h"
#include "testing/lutestsuiterunner/model/runstate.h"
#include "testing/lutestsuiterunner/reports/junit.h"

namespace
{

constexpr std::uint32_t c_Results = 9;
constexpr std::uint64_t c_NanosecondsPerMillisecond = 1'000'000;

Runner::SPlan makePlan(std::uint32_t count)
{
    Runner::SPlan plan;
    plan.dataDirectory = plan.workingDirectory = L"/daten/";
    plan.origin.machine = L"Rechner";
    for (const wchar_t* const className : {L"CFirst", L"CSecond"})
    {
        LuTestSuite::SUnitTest& unitTest = plan.unitTests.emplace_back();
        unitTest.className = className;
        unitTest.dataDirectory = plan.dataDirectory + className + L"/";
    }
    for (std::uint32_t index = 0; index < count + 2; ++index)
    {
        LuTestSuite::SUnitTest& unitTest = plan.unitTests[index < count ? 0 : 1];
        const std::wstring name = L"Satz " + std::to_wstring(index) + L" 'größer' & \"kleiner\" <b>\x1b.txt";
        unitTest.cases.push_back({unitTest.dataDirectory + name, name, {}});
    }
    plan.cases = Runner::PlanCases(plan.unitTests, 1);
    plan.cases.back().isQuarantined = true;
    plan.rules.isFlakyAllowed = true;
    plan.disabled.push_back({L"CSecond", plan.unitTests[1].dataDirectory, L"aus", {}});
    return plan;
}

/// Applies records to a state; Run applies those of one attempt.
class CFeeder
{
public:
    explicit CFeeder(Runner::CRunState& state) : m_state(state) {}

    void Run(std::uint32_t caseIndex, std::uint32_t attempt, LuTestSuiteRun::ECaseRunResult result)
    {
        Apply(Runner::SCaseStarted{caseIndex, attempt});
        Runner::SCaseEnded ended;
        ended.caseIndex = caseIndex;
        ended.attempt = attempt;
        ended.info.result = result;
        ended.info.time = caseIndex * c_NanosecondsPerMillisecond;
        ended.info.messages = caseIndex == 0
                                  ? L"INFO:  Übersprungen: keine <Lizenz>\n"
                                  : L"ERROR: erwartet <1> & nicht ]]> \"2\"\nINFO:  größer \x02\x1b[31m € \U0001F600\n";
        Apply(ended);
    }

    void Apply(const Runner::Record& record) { m_state.Apply({1, ++m_sequence}, record); }

private:
    Runner::CRunState& m_state;
    std::uint64_t m_sequence = 0;
};

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3)
    {
        return EXIT_FAILURE;
    }
    using LuTestSuiteRun::ECaseRunResult;
    const auto count = static_cast<std::uint32_t>(std::strtoul(arguments[2], nullptr, 10));
    Runner::CRunState state(makePlan(count));
    CFeeder feeder(state);
    feeder.Apply(Runner::SJournalBegun{{}, count + 2, 1, {}, 0, {}, L"2024-01-02 03:04:05"});
    for (std::uint32_t index = 0; index < count; ++index)
    {
        feeder.Run(index, 1, static_cast<ECaseRunResult>(index % c_Results));
    }
    feeder.Run(count, 1, ECaseRunResult::Error);
    feeder.Run(count, 2, ECaseRunResult::Ok);
    feeder.Run(count + 1, 1, ECaseRunResult::Different);
    feeder.Apply(Runner::SRunFinished{L"2024-01-02 03:04:06", 1});
    Runner::WriteJunit(LbEncoding::FromNative(arguments[1]), state);
    return EXIT_SUCCESS;
}

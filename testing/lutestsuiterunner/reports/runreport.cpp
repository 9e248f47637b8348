#include "testing/lutestsuiterunner/reports/runreport.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "testing/lutestsuite/lutestsuiterunevents.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuiterunner/model/textlines.h"
#include "testing/lutestsuiterunner/reports/casenotes.h"

namespace Runner
{

namespace
{

/// The part of a plan that its shard runs, in records of the library.
struct SRunView
{
    std::vector<LuTestSuite::SUnitTest> unitTests;
    std::vector<LuTestSuiteRun::SCaseInfo> cases;
    std::vector<std::uint32_t> planned; ///< the index in the plan, for each of `cases`
};

/// Collects the case runs of the plan's shard.
class CViewMaker
{
public:
    explicit CViewMaker(const CRunState& state) : m_state(state) {}

    SRunView Make()
    {
        const std::vector<SPlannedCase>& cases = m_state.GetPlan().cases;
        for (std::uint32_t index = 0; index < cases.size(); ++index)
        {
            if (cases[index].isInShard)
            {
                add(index, cases[index]);
            }
        }
        return std::move(m_view);
    }

private:
    void add(std::uint32_t index, const SPlannedCase& planned)
    {
        const LuTestSuite::SUnitTest& unitTest = m_state.GetPlan().unitTests[planned.unitTest];
        if (m_unitTest != planned.unitTest)
        {
            m_view.unitTests.push_back(
                {unitTest.className, unitTest.dataDirectory, {}, unitTest.contacts, unitTest.moduleName});
            m_testCase.reset();
        }
        LuTestSuite::SUnitTest& target = m_view.unitTests.back();
        if (m_testCase != planned.testCase)
        {
            target.cases.push_back(unitTest.cases[planned.testCase]);
        }
        m_unitTest = planned.unitTest;
        m_testCase = planned.testCase;

        const SAttempt* const reported = m_state.GetReported(index);
        LuTestSuiteRun::SCaseInfo info = reported == nullptr ? LuTestSuiteRun::SCaseInfo() : reported->result.info;
        info.unitTest = static_cast<std::uint32_t>(m_view.unitTests.size() - 1);
        info.testCase = static_cast<std::uint32_t>(target.cases.size() - 1);
        info.repetition = planned.repetition;
        m_view.cases.push_back(std::move(info));
        m_view.planned.push_back(index);
    }

    const CRunState& m_state;
    SRunView m_view;
    std::optional<std::uint32_t> m_unitTest;
    std::optional<std::uint32_t> m_testCase;
};

template<typename T>
std::unique_ptr<T> toPointer(const std::optional<T>& value)
{
    return value ? std::make_unique<T>(*value) : nullptr;
}

/// Takes the machine and the build from the plan, because the report may be made on another machine.
void describeOrigin(const SOrigin& origin, LuTestSuiteReport::SReportData& data)
{
    data.BuildConfiguration = origin.buildConfiguration;
    data.SvnInfo = toPointer(origin.svn);
    data.PscmInfo = toPointer(origin.pscm);
    data.Processor = origin.processor;
    data.GPU = origin.graphics;
    data.MachineName = origin.machine;
}

void addNotes(const CRunState& state, std::uint32_t caseIndex, LuTestSuiteReport::SReportCase& reportCase)
{
    std::vector<std::wstring> notes = GetCaseNotes(state, caseIndex);
    // Not null: the data contains only cases that have a reported attempt.
    std::ranges::move(SplitLines(state.GetReported(caseIndex)->result.stacks), std::back_inserter(notes));
    for (const std::wstring& note : notes)
    {
        reportCase.Dumps.push_back({false, LuTestSuiteUtils::LuMarkupWriter::Escape(note)});
    }
}

LuTestSuiteRun::SStats makeStats(const CRunState& state, const SRunView& view)
{
    LuTestSuiteRun::SStats stats = LuTestSuiteRun::CountCases(view.cases, view.unitTests.size());
    stats.startTime = state.GetStartTime();
    stats.endTime = state.GetEndTime();
    stats.totalTime = state.GetTotalTime();
    return stats;
}

} // namespace

LuTestSuiteReport::SReportData MakeReportData(const CRunState& state)
{
    const SPlan& plan = state.GetPlan();
    const SRunView view = CViewMaker(state).Make();
    LuTestSuiteSetup setup;
    setup.dataDir = plan.dataDirectory;
    setup.params = plan.params;
    setup.messageReportMax = plan.rules.messageReportMax;

    LuTestSuiteReport::SReportData data;
    LuTestSuiteReport::GenerateReportData(data, setup, view.unitTests, view.cases, makeStats(state, view));
    describeOrigin(plan.origin, data);
    for (LuTestSuiteReport::SReportCase& reportCase : data.Cases)
    {
        addNotes(state, view.planned[reportCase.Id], reportCase);
    }
    return data;
}

void WriteRunReports(const std::wstring& xmlPath, const std::wstring& htmlPath, const CRunState& state)
{
    constexpr bool c_WithFilesBeside = true;
    const SReportRules& rules = state.GetPlan().rules;
    const LuTestSuiteReport::SReportData data = MakeReportData(state);
    LuTestSuiteReport::GenerateXMLReport(xmlPath, data);
    LuTestSuiteReport::GenerateHTMLReport(htmlPath, data, c_WithFilesBeside, c_WithFilesBeside, rules.smallReport,
                                          rules.tolerateWarnings);
}

} // namespace Runner

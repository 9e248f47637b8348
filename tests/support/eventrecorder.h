/// An observer that records all events.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuiterunevents.h"

/// Records a line for each event: "planned 2" (the number of cases), "started Name", "finished Name 0" (the number of
/// the result), "canceled", "ended 2" (the number of executed cases).
class EventRecorder : public LuTestSuiteRun::IRunObserver
{
public:
    struct SEnd
    {
        LuTestSuiteRun::SCaseInfo info;
        LuTestSuiteRun::SCaseEnd end;
    };

    void OnPlanned(const LuTestSuiteRun::SRunPlanned& planned) override
    {
        m_unitTests = &planned.unitTests;
        add(L"planned " + std::to_wstring(planned.cases.size()));
    }

    void OnCaseStarted(const LuTestSuiteRun::SCaseStarted& started) override
    {
        processes.push_back(started.processId);
        add(L"started " + getName(started.info));
    }

    void OnCaseFinished(const LuTestSuiteRun::SCaseFinished& finished) override
    {
        ends.push_back({finished.info, finished.end});
        const auto result = static_cast<std::uint32_t>(finished.info.result);
        add(L"finished " + getName(finished.info) + L" " + std::to_wstring(result));
    }

    void OnCanceled() override { add(L"canceled"); }

    void OnEnded(const LuTestSuiteRun::SRunResult& result) override
    {
        add(L"ended " + std::to_wstring(result.stats.total.executed));
    }

    std::vector<std::wstring> lines;
    std::vector<std::uint64_t> processes; ///< of each case, in the order in which the cases started
    std::vector<SEnd> ends;               ///< of the cases, in the order in which they finished

    /// Called with each line after the line was added.
    std::function<void(const std::wstring&)> onLine = [](const std::wstring&) {};

private:
    void add(const std::wstring& line)
    {
        lines.push_back(line);
        onLine(line);
    }

    const std::wstring& getName(const LuTestSuiteRun::SCaseInfo& info) const
    {
        return (*m_unitTests)[info.unitTest].cases[info.testCase].name;
    }

    const std::vector<LuTestSuite::SUnitTest>* m_unitTests = nullptr;
};

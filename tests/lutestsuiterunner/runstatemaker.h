/// States of runs, made record by record.
#pragma once

#include <utility>

#include "testing/lutestsuiterunner/model/runstate.h"
#include "tests/lutestsuiterunner/samplerun.h"

class CRunStateMaker
{
public:
    explicit CRunStateMaker(Runner::SPlan plan = MakeSamplePlan()) : m_state(std::move(plan)) { BeginJournal(1); }

    void BeginJournal(std::uint32_t number)
    {
        m_place = {number, 0};
        // The process id in the records of MakeStart and MakeEnd.
        constexpr std::uint64_t c_Host = 4711;
        Apply(
            Runner::SJournalBegun{"", m_state.GetPlan().cases.size(), number, {}, c_Host, {}, L"2024-01-02 03:04:05"});
    }

    void Apply(const Runner::Record& record)
    {
        ++m_place.sequence;
        m_state.Apply(m_place, record);
    }

    void RunCase(const Runner::SCaseEnded& ended, Runner::EAttemptKind kind = Runner::EAttemptKind::First)
    {
        Apply(MakeStart(ended.caseIndex, ended.attempt, kind));
        Apply(ended);
    }

    void RunCase(std::uint32_t caseIndex, LuTestSuiteRun::ECaseRunResult result, std::uint32_t attempt = 1,
                 Runner::EAttemptKind kind = Runner::EAttemptKind::First)
    {
        RunCase(MakeEnd(caseIndex, result, attempt), kind);
    }

    /// Records that each case without a verdict passes, and that the run ends.
    void RunRest()
    {
        for (const std::uint32_t index : m_state.GetMissingCases())
        {
            RunCase(index, LuTestSuiteRun::ECaseRunResult::Ok);
        }
        Apply(Runner::SRunFinished{L"2024-01-02 03:04:09", 4'000'000'000});
    }

    const Runner::CRunState& Get() const { return m_state; }

private:
    Runner::CRunState m_state;
    Runner::SRecordPlace m_place;
};

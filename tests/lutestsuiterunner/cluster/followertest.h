/// A follower of a run. A test acts as the hosts and the engine of the run.
#pragma once

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "testing/lutestsuiterunner/cluster/follower.h"
#include "tests/lutestsuiterunner/cluster/distributedrun.h"

/// An engine whose answers the test sets.
class CFakeEngine : public Runner::IEngine
{
public:
    void Submit(const Runner::SSubmission& submission) override
    {
        if (isRefusing)
        {
            throw LbException(L"Kein Platz");
        }
        submitted.push_back(submission);
        for (const std::uint32_t shard : submission.shards)
        {
            tasks[shard] = {Runner::ETaskState::Running, L"node"};
        }
    }

    std::optional<Runner::Tasks> Poll(const std::vector<Runner::SSubmission>& /*submissions*/) override
    {
        ++questions;
        return isSilent ? std::nullopt : std::optional(tasks);
    }

    void Cancel(const std::vector<Runner::SSubmission>& /*submissions*/) override
    {
        ++cancellations;
        if (!isDeaf)
        {
            tasks.clear();
        }
    }

    std::chrono::milliseconds GetPollInterval() const override { return std::chrono::seconds(15); }

    std::chrono::milliseconds GetGrace() const override { return std::chrono::seconds(2); }

    std::chrono::milliseconds GetLongestGrace() const override { return std::chrono::seconds(60); }

    std::vector<Runner::SSubmission> submitted;
    Runner::Tasks tasks;
    bool isSilent = false;
    bool isRefusing = false;
    bool isDeaf = false; ///< ignores requests to cancel tasks
    int questions = 0;
    int cancellations = 0;
};

class RunnerFollower : public testing::Test
{
protected:
    /// Advances the time and makes one step.
    bool StepAfter(std::chrono::seconds seconds)
    {
        m_now += seconds;
        return m_follower.Step(m_now);
    }

    void Lose(std::uint32_t shard, const std::wstring& note = L"NODE_FAIL auf node1")
    {
        m_engine.tasks[shard] = {Runner::ETaskState::Over, note};
    }

    /// Loses the tasks of a shard, and those that replace them, until the follower submits no further tasks.
    void LoseForGood(std::uint32_t shard, const std::wstring& note = L"NODE_FAIL auf node1")
    {
        for (int round = 0; round < 4; ++round)
        {
            LoseAndNotice(shard, note);
        }
    }

    void LoseAndNotice(std::uint32_t shard, const std::wstring& note = L"NODE_FAIL auf node1")
    {
        Lose(shard, note);
        StepAfter(std::chrono::seconds(15));
        StepAfter(std::chrono::seconds(2));
    }

    const CPlayedRun m_run;
    CFakeEngine m_engine;
    Runner::CFollower m_follower{m_run.GetFolder(), m_run.GetShards(), m_engine};
    Runner::CFollower::Time m_now;
};

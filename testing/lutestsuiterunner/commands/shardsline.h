/// The progress of a distributed run on the console.
#pragma once

#include <chrono>

#include "base/inoncopyable.h"
#include "testing/lutestsuiterunner/cluster/follower.h"

namespace Runner
{

/// One line: rewritten on a terminal, else written every 30 seconds.
class CShardsLine : public INonCopyable
{
public:
    using Clock = std::chrono::steady_clock;

    ~CShardsLine();

    void Show(const CFollower& follower, Clock::time_point now);

private:
    const Clock::time_point m_start = Clock::now();
    Clock::time_point m_next = m_start + std::chrono::seconds(30);
};

} // namespace Runner

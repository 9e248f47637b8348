/// Ends a canceled run whose cases do not end.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "base/inoncopyable.h"

namespace Runner
{

/// Watches for an interruption of the process as long as the object exists.
class CCancellationWatch : public INonCopyable
{
public:
    /// Calls the functions on a thread of its own: `announce` if the object still exists shortly after an interruption,
    /// `giveUp` if it still exists five seconds after it. `giveUp` must end the process.
    CCancellationWatch(std::function<void()> announce, std::function<void()> giveUp);
    ~CCancellationWatch();

private:
    void watch();
    bool waitForEnd(std::chrono::milliseconds time);

    std::function<void()> m_announce;
    std::function<void()> m_giveUp;
    std::mutex m_mutex;
    std::condition_variable m_ending;
    bool m_isEnding = false;
    std::thread m_thread; // the last member: it uses the others
};

} // namespace Runner

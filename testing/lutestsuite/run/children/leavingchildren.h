/// Child processes that were asked to exit.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "base/lbtimer.h"
#include "base/os/childoutput.h"
#include "base/os/childprocess.h"

namespace LuTestSuiteRun
{

/// A child that was asked to exit.
struct SLeavingChild
{
    std::unique_ptr<LbOs::CChildProcess> child;
    std::unique_ptr<LbOs::CChildOutput> errors; ///< its standard error; may be null
    LbTimer time{LbTimer::eR_MilliSecond};      ///< since it was asked
};

/// Lets children run their exit handlers (profiles, leak reports) while the run goes on. A child that has not ended by
/// itself 2 s after it was asked is ended. Any thread.
class CLeavingChildren : public INonCopyable
{
public:
    CLeavingChildren();

    /// Waits for the remaining children, and writes to standard error how children that failed have ended.
    ~CLeavingChildren();

    /// Takes over a child; ignores null. If too many are exiting, waits for the one asked first; if the one before it
    /// had to be killed, kills it without waiting.
    void Add(SLeavingChild leaving) noexcept;

    /// Kills all children, to free resources that another thread needs. False if there was no child.
    bool EndAll() noexcept;

    /// The maximum number of children that exit at a time. 0 if the system lets the user have few processes: then the
    /// run waits for each child.
    static std::size_t GetMost();

private:
    void dropEnded();
    void waitForFirst(bool isPatient);
    void drop(std::size_t index);

    static constexpr std::uint32_t sc_uiLongestMilliseconds = 2000;
    static constexpr std::size_t sc_uiMostReports = 4;

    std::mutex m_mutex; ///< guards all below
    std::vector<SLeavingChild> m_children;
    bool m_hadToEnd = false;
    std::wstring m_report;
    std::size_t m_reports = 0;
};

} // namespace LuTestSuiteRun

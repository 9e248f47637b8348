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
    LbTimer time{LbTimer::eR_MilliSecond};      ///< time since the child was asked to exit
};

/// Lets children run their exit handlers (which write profiles or leak reports) while the run continues. Kills a child
/// that is still running 2 s after it was asked to exit. Any thread.
class CLeavingChildren : public INonCopyable
{
public:
    CLeavingChildren();

    /// Waits for the remaining children. Then writes to standard error how children with an exit status other than 0
    /// have ended.
    ~CLeavingChildren();

    /// Takes ownership of a child; ignores an empty object. If more than GetMost children are exiting, waits for the
    /// child that was asked first; kills that child without waiting if the previous child had to be killed.
    void Add(SLeavingChild leaving) noexcept;

    /// Kills all children to free resources that another case needs. False if there was no child.
    bool EndAll() noexcept;

    /// The maximum number of children that may be exiting at the same time. 0 if the system allows the user only few
    /// processes; then Add waits for each child.
    static std::size_t GetMost();

private:
    void dropEnded();
    void waitForFirst(bool isPatient);
    void drop(std::size_t index);

    static constexpr std::uint32_t sc_uiLongestMilliseconds = 2000;
    static constexpr std::size_t sc_uiMostReports = 4;

    std::mutex m_mutex; ///< protects all members below
    std::vector<SLeavingChild> m_children;
    bool m_hadToEnd = false; ///< true if the last removed child had to be killed
    std::wstring m_report;
    std::size_t m_reports = 0;
};

} // namespace LuTestSuiteRun

/// The connection of one thread to a child process.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "base/lbtimer.h"
#include "base/os/childprocess.h"
#include "base/os/processors.h"
#include "testing/lutestsuite/run/children/briefwatch.h"
#include "testing/lutestsuite/run/children/childend.h"
#include "testing/lutestsuite/run/children/childobjects.h"
#include "testing/lutestsuite/run/children/childsettings.h"
#include "testing/lutestsuite/run/children/crashbox.h"
#include "testing/lutestsuite/run/children/filequota.h"
#include "testing/lutestsuite/run/children/processorsharing.h"

namespace LuTestSuiteRun
{

/// A child exits after this time without a request.
inline constexpr std::uint32_t c_LongestIdleMilliseconds = 5000;

/// A work buffer, two events and the child process at their other end. Used by one thread.
class CChildChannel : public INonCopyable
{
public:
    /// Creates the shared objects under fresh names; throws LbException if that fails. The settings must outlive
    /// the object.
    explicit CChildChannel(const SChildSettings& settings);

    /// Starts a child if there is none; HasChild tells whether that succeeded. Does not notice a child that exited
    /// while idle, since checking would cost every case time: WaitForAnswer replaces that child.
    void EnsureChild();

    /// Marks the child as started ahead of its case: it is replaced if it ends before it takes its first request.
    void MarkAsSpare() { m_isSpare = true; }

    /// Ensures a child and everything that its next case needs; false if there is no child. Throws LbException.
    bool MakeReady();

    /// Assigns the next process index to a child that has none.
    void EnsureProcessIndex();

    bool HasChild() const { return m_child != nullptr; }
    bool IsChildRunning() const { return m_child && m_child->IsRunning(); }

    /// Valid until EnsureChild, MakeReady or WaitForAnswer starts a child, which may replace the buffer.
    IWorkBuffer& GetBuffer() { return m_objects->buffer; }

    /// Submits the request in the buffer; the time limit starts here.
    void Submit();

    /// Waits until the child has answered, has ended, the limit in whole seconds is exceeded, or the run is canceled.
    /// Without an answer, ends the child's processes; after the limit or a cancellation also writes that result into
    /// the buffer. Returns the index of the process that had the request, -1 without one.
    std::int32_t WaitForAnswer(std::uint32_t timeOutSec, const std::function<bool()>& isCanceled);

    /// Asks the child to exit and passes it on. Empty without a child. Also empty if the child has run no case or has
    /// not answered: the channel's destructor ends such a child.
    SLeavingChild RequestExit();

    /// How the last request ended.
    const SCaseEnd& GetEnd() const { return m_end; }

    /// The process id of the child; 0 without one.
    std::uint64_t GetProcessId() const { return m_child ? m_child->GetId() : 0; }

private:
    enum class EEnd
    {
        Answered,
        TimedOut,
        Canceled,
        ChildEnded,
        NotTaken, ///< the child did not take the request and can no longer do so
        Failed
    };

    void startChild();

    /// Ends the child and all processes that its cases have started; no effect without a child.
    void endChild();

    /// Replaces objects without a name, which no child could open, and keeps the request; false on failure.
    bool ensureNames();

    /// True if no child took the request: the child ended by itself, was about to, or could not open the objects.
    bool isNotTaken(EEnd end);

    /// Starts another child for a request that no child has taken.
    void replaceChild();

    /// Gives the request in the buffer to the child.
    void submit();

    /// True if the child answers during a watch.
    bool watch();

    LbOs::EEventWait waitOnce(std::uint32_t milliseconds);
    EEnd wait(std::uint32_t timeOutSec, const std::function<bool()>& isCanceled);
    static ECaseEnd toCaseEnd(EEnd end);
    void readCrash();

    /// Stores stacks and dump of the child in the record of the case.
    void examine(const std::optional<LbOs::SCrashedThread>& crashed);
    void writeDump(const std::optional<LbOs::SCrashedThread>& crashed, std::chrono::milliseconds longest);

    /// Empty while the case may continue.
    std::optional<EEnd> findEnd(std::uint32_t timeOutSec);
    void describeEnd(EEnd end);
    void writeResult(ECaseRunResult result);

    /// Withdraws the request; false if the child has taken it.
    bool withdraw();

    /// Signals an untaken request again, because a test may have consumed the signal.
    void remind();

    const SChildSettings& m_settings;
    CFileQuota m_fileQuota;
    std::unique_ptr<SChildObjects> m_objects;
    CChildErrors m_errors;
    std::unique_ptr<CCrashWatch> m_crashWatch; ///< of the child; null if the run does not examine crashes
    std::unique_ptr<LbOs::CChildProcess> m_child;
    std::wstring m_startFailure; ///< why the last start failed
    SCaseEnd m_end;
    std::int32_t m_processIndex = sc_iNone;
    std::uint32_t m_number = 0;           ///< of the last request
    LbOs::CThreadProcessors m_processors; ///< of the thread that submits requests
    CProcessorSharing m_sharing;
    CBriefWatch m_watch;
    LbTimer m_idle{LbTimer::eR_MilliSecond}; ///< since the child was started or has answered
    bool m_isSpare = false;
    bool m_hasAnswered = false;
    bool m_mayBeLeaving = false;                   ///< it had been idle for long when it got the request
    std::optional<std::uint32_t> m_crashCode;      ///< SCrash::code of a child that has crashed and ends by itself; the
                                                   ///< time limit of its case no longer applies
    std::optional<std::int64_t> m_crashStatus;     ///< the exit status of a crashed child that had to be ended
    LbTimer m_crashTimer{LbTimer::eR_MilliSecond}; ///< since the crash of the child was noticed
    LbTimer m_timer{LbTimer::eR_NanoSecond};       ///< since the request

    static constexpr std::int32_t sc_iNone = -1;
};

} // namespace LuTestSuiteRun

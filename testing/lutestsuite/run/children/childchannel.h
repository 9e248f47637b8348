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

/// A child process, with the work buffer and the two events that the run shares with it. Used by one thread.
class CChildChannel : public INonCopyable
{
public:
    /// Creates the shared objects under fresh names; throws LbException if that fails. The settings must outlive
    /// the object.
    explicit CChildChannel(const SChildSettings& settings);

    /// Starts a child if there is none; HasChild tells whether there is one afterwards. Does not check whether an
    /// existing child has exited while idle, because the check would take time for each case; WaitForAnswer replaces a
    /// child that has exited.
    void EnsureChild();

    /// Marks the child as started before its case was known. WaitForAnswer replaces such a child if it ends before it
    /// takes its first request.
    void MarkAsSpare() { m_isSpare = true; }

    /// Calls EnsureChild; false if there is no child afterwards. May throw LbException.
    bool MakeReady();

    /// Assigns the next process index to a child that has none.
    void EnsureProcessIndex();

    bool HasChild() const { return m_child != nullptr; }
    bool IsChildRunning() const { return m_child && m_child->IsRunning(); }

    /// The reference is valid until EnsureChild, MakeReady or WaitForAnswer starts a child: the start may replace the
    /// buffer.
    IWorkBuffer& GetBuffer() { return m_objects->buffer; }

    /// Submits the request in the buffer to the child and starts the time limit.
    void Submit();

    /// Waits until the child has answered or ended, the limit in whole seconds is exceeded, or the run is canceled. If
    /// the child has not answered, ends it and its descendants. After the limit or a cancellation, also writes TimeOut
    /// or Canceled into the buffer as the result. Returns the index of the process that received the request, or -1 if
    /// there was no process.
    std::int32_t WaitForAnswer(std::uint32_t timeOutSec, const std::function<bool()>& isCanceled);

    /// Asks the child to exit and passes its ownership to the caller. Returns an empty object if there is no child, if
    /// the child has received no request, or if it has not answered its last request; the channel's destructor then
    /// ends the child.
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

    /// If an object has lost its name, so that no child could open it, replaces all objects and copies the request;
    /// false on failure.
    bool ensureNames();

    /// True if the child has not taken the request, can no longer take it, and another child may run the case.
    bool isNotTaken(EEnd end);

    /// Starts another child for a request that no child has taken.
    void replaceChild();

    /// Numbers the request in the buffer and signals it to the child.
    void submit();

    /// Polls briefly; true if the child has answered.
    bool watch();

    LbOs::EEventWait waitOnce(std::uint32_t milliseconds);
    EEnd wait(std::uint32_t timeOutSec, const std::function<bool()>& isCanceled);
    static ECaseEnd toCaseEnd(EEnd end);
    void readCrash();

    /// Stores the child's stacks and the path of its dump in m_end, if the settings request them.
    void examine(const std::optional<LbOs::SCrashedThread>& crashed);
    void writeDump(const std::optional<LbOs::SCrashedThread>& crashed, std::chrono::milliseconds longest);

    /// If the case has reached its time limit, or its crashed child does not end, returns how the case ended; otherwise
    /// empty.
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
    std::unique_ptr<CCrashWatch> m_crashWatch; ///< null if the run does not examine crashes of the child
    std::unique_ptr<LbOs::CChildProcess> m_child;
    std::wstring m_startFailure; ///< why the last start failed
    SCaseEnd m_end;
    std::int32_t m_processIndex = sc_iNone;
    std::uint32_t m_number = 0;           ///< number of the last request
    LbOs::CThreadProcessors m_processors; ///< processors of the thread that submits requests
    CProcessorSharing m_sharing;
    CBriefWatch m_watch;
    LbTimer m_idle{LbTimer::eR_MilliSecond}; ///< time since the child was started or has answered
    bool m_isSpare = false;
    bool m_hasAnswered = false;
    bool m_mayBeLeaving = false;                   ///< the child may exit after a long idle time instead of taking the
                                                   ///< request
    std::optional<std::uint32_t> m_crashCode;      ///< SCrash::code of a child that has crashed and ends by itself; the
                                                   ///< time limit of its case no longer applies
    std::optional<std::int64_t> m_crashStatus;     ///< exit status of a crashed child that Terminate had to end
    LbTimer m_crashTimer{LbTimer::eR_MilliSecond}; ///< time since the channel has noticed the child's crash
    LbTimer m_timer{LbTimer::eR_NanoSecond};       ///< time since the request was submitted

    static constexpr std::int32_t sc_iNone = -1;
};

} // namespace LuTestSuiteRun

/// A child process of a run, and what one executing thread shares with it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "base/lbtimer.h"
#include "base/os/childprocess.h"
#include "base/os/processors.h"
#include "testing/lutestsuite/run/children/childend.h"
#include "testing/lutestsuite/run/children/childobjects.h"
#include "testing/lutestsuite/run/children/crashbox.h"
#include "testing/lutestsuite/run/children/leavingchildren.h"

namespace LuTestSuiteRun
{

/// A child that has had no request for so long leaves.
inline constexpr std::uint32_t c_LongestIdleMilliseconds = 5000;

/// What all child processes of a run are started with.
struct SChildSettings
{
    std::wstring dataDirectory;     ///< full path
    std::vector<std::wstring> dlls; ///< test modules to load beside the fixed list
    bool assertDialog = true;
    CLeavingChildren* leaving = nullptr; ///< takes children whose work is done; null: they are ended
    bool takeStacks = false;             ///< read the stacks of children that crash or are ended at the time limit
};

/// The command line of a child that serves through objects of these names.
std::wstring GetChildCommandLine(const SChildSettings& settings, const std::wstring& memoryId,
                                 const std::wstring& requestEventId, const std::wstring& responseEventId);

/// Whether parent and child are to meet on one processor for their next request: only when that spares them something.
/// A short answer that nevertheless took its time had to wait until another processor was awake. To meet costs some
/// system calls, so now and then a request goes without, to see whether there is still need.
class CProcessorSharing
{
public:
    bool IsNext() const { return m_left > 0; }

    /// How long the last request took, which was made as IsNext said.
    void Learn(std::uint64_t nanoseconds);

    /// Nothing is known about the next child.
    void Forget() { m_left = 0; }

    static constexpr std::uint64_t sc_uiQuick = 25'000; ///< at most: both processors were awake, or there was but one
    static constexpr std::uint64_t sc_uiLong = 200'000; ///< at least: the case itself takes long
    static constexpr std::uint32_t sc_uiInARow = 255;

private:
    std::uint32_t m_left = 0;
};

/// A work buffer, two events and the child process at their other end. Used by one thread.
class CChildChannel : public INonCopyable
{
public:
    /// Creates the shared objects under fresh names; throws LbException when they cannot be had. The settings are the
    /// caller's and outlive the object.
    explicit CChildChannel(const SChildSettings& settings);

    /// Starts a child unless there is one. Without success there is none. One that has meanwhile left for lack of work
    /// is replaced when it does not answer: to look for it ahead of each case would cost all of them time.
    void EnsureChild();

    /// The child was started while a case was under way: when it ends before it has taken its first request, it is
    /// replaced.
    void BeSpare() { m_isSpare = true; }

    /// Asserts the child, and gets all that its next case needs; false without a child. Throws LbException.
    bool MakeReady();

    /// Numbers the child, unless it is: those that a case was given, in that order.
    void EnsureProcessIndex();

    bool HasChild() const { return m_child != nullptr; }
    bool IsChildRunning() const { return m_child && m_child->IsRunning(); }

    /// Another buffer may take its place when a child is started or asked.
    IWorkBuffer& GetBuffer() { return m_objects->buffer; }

    /// Hands the request in the buffer to the child; its time counts from here.
    void Ask();

    /// Waits until the child has answered. When it does not, its processes are ended, and the buffer says why: the
    /// limit in whole seconds was exceeded, the run was canceled, or the child itself has ended, which leaves the
    /// buffer as it is. Returns the index of the process that had the request, -1 without one.
    std::int32_t WaitForAnswer(std::uint32_t timeOutSec, const std::function<bool()>& isCanceled);

    /// Asks the child to leave and gives it away. There is none to give, and a child is ended with the channel, if it
    /// has run no case, or has not answered.
    SLeavingChild SendAway();

    /// How the last request came to its end.
    const SCaseEnd& GetEnd() const { return m_end; }

    /// The system's number of the child; 0 without one.
    std::uint64_t GetProcessId() const { return m_child ? m_child->GetNumber() : 0; }

private:
    enum class EEnd
    {
        Answered,
        TimedOut,
        Canceled,
        ChildEnded,
        NotTaken, ///< the child did not take the request, and cannot any more
        Failed
    };

    void startChild();

    /// Ends the child with all that its cases have started; no effect without one.
    void endChild();

    /// Replaces objects without a name, which no child could open, and keeps the request; false on failure.
    bool ensureNames();

    /// The request was left to nobody: by a child that has ended by itself, or was about to, or could not open the
    /// objects.
    bool isNotTaken(EEnd end);

    /// Starts another child for a request that nobody has taken.
    void replaceChild();

    /// Gives the request in the buffer to the child.
    void submit();

    LbOs::EEventWait waitOnce(std::uint32_t milliseconds);
    EEnd wait(std::uint32_t timeOutSec, const std::function<bool()>& isCanceled);
    static ECaseEnd toCaseEnd(EEnd end);
    void readCrash();
    void describeEnd(EEnd end);
    void writeResult(ECaseRunResult result);

    /// Takes the request back; false when the child has taken it.
    bool withdraw();

    /// Signals a request again that the child has not taken: a test may have taken the signal.
    void remind();

    /// Counts the channels of all threads, and makes room for what this one opens.
    class CFileQuota : public INonCopyable
    {
    public:
        CFileQuota();
        ~CFileQuota();
    };

    const SChildSettings& m_settings;
    CFileQuota m_fileQuota;
    std::unique_ptr<SChildObjects> m_objects;
    CChildErrors m_errors;
    std::unique_ptr<CCrashWatch> m_crashWatch; ///< of the child; null if nobody wants stacks
    std::unique_ptr<LbOs::CChildProcess> m_child;
    SCaseEnd m_end;
    std::int32_t m_processIndex = sc_iNone;
    std::uint32_t m_number = 0;           ///< of the last request
    LbOs::CThreadProcessors m_processors; ///< of the thread that asks
    CProcessorSharing m_sharing;
    LbTimer m_idle{LbTimer::eR_MilliSecond}; ///< since the child was started or has answered
    bool m_isSpare = false;
    bool m_hasAnswered = false;
    bool m_mayBeLeaving = false;             ///< it had been idle for long when it was asked
    LbTimer m_timer{LbTimer::eR_NanoSecond}; ///< since the request

    static constexpr std::int32_t sc_iNone = -1;
};

} // namespace LuTestSuiteRun

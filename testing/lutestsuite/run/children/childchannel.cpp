#include "testing/lutestsuite/run/children/childchannel.h"

#include <atomic>
#include <utility>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/os/crash.h"
#include "base/os/dumps.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/run/children/childcommandline.h"

namespace LuTestSuiteRun
{

namespace
{

/// At the end of a scope, restores the processors that the thread may use.
struct SRestored
{
    LbOs::CThreadProcessors& processors;

    ~SRestored() { processors.Restore(); }
};

bool examinesCrashes(const SChildSettings& settings)
{
    return settings.takeStacks || !settings.dumpDirectory.empty();
}

/// The name contains the process id, so that repetitions of a case have different names.
std::wstring makeDumpName(const SWorkBuffer& buffer, std::uint64_t processId)
{
    constexpr std::size_t c_Longest = 120;
    const std::wstring name = LoadName(buffer.className) + L"_" + LoadName(buffer.caseName);
    return LbPath::ToSafeName(name.substr(0, c_Longest)) + L"-" + std::to_wstring(processId);
}

} // namespace

CChildChannel::CChildChannel(const SChildSettings& settings)
    : m_settings(settings), m_objects(std::make_unique<SChildObjects>())
{
}

bool CChildChannel::ensureNames()
{
    if (m_objects->AreNamed())
    {
        return true;
    }
    try
    {
        auto objects = std::make_unique<SChildObjects>();
        CopyRequest(*m_objects->buffer.GetReadAccess(), *objects->buffer.GetWriteAccess());
        m_objects = std::move(objects);
        return true;
    }
    catch (const LbException& exception)
    {
        m_startFailure = exception.GetMessageText();
        return false;
    }
}

void CChildChannel::endChild()
{
    // A child with exit status 0 has already ended the processes that its cases have started.
    if (m_child && m_child->GetExitStatus() != 0)
    {
        m_child->Terminate();
    }
    m_child.reset();
}

void CChildChannel::startChild()
{
    endChild();
    if (!ensureNames())
    {
        return;
    }
    // Removes signals left by the previous child.
    m_objects->request->Reset();
    m_objects->response->Reset();
    LbOs::SChildOptions options;
    const std::wstring folder = LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable);
    options.program = folder + GetHostName();
    options.commandLine =
        GetChildCommandLine(m_settings, m_objects->buffer.GetName(), m_objects->requestId, m_objects->responseId);
    options.workingDirectory = folder;
    options.isSilent = true;
    options.hasPreparedSignals = true;
    m_crashWatch.reset();
    if (examinesCrashes(m_settings))
    {
        m_crashWatch = std::make_unique<CCrashWatch>(m_objects->buffer.GetName());
    }
    PrepareChildEnds();
    m_errors.Renew();
    options.errors = m_errors.GetFile();
    m_child = LbOs::CChildProcess::Start(options, &m_startFailure);
    m_processIndex = sc_iNone;
    m_isSpare = m_hasAnswered = false;
    m_sharing.Forget();
    m_idle.Restart();
}

void CChildChannel::EnsureChild()
{
    if (!m_child)
    {
        startChild();
    }
}

bool CChildChannel::MakeReady()
{
    EnsureChild();
    return HasChild();
}

bool CChildChannel::isNotTaken(EEnd end)
{
    // If the child ends without taking the request, another child may run the case in these situations:
    // - The child has answered cases, or may be exiting. Then earlier cases are to blame.
    // - It is a spare child, and may have lacked resources that a running case has freed since.
    // - It has exited with status 0 after a long idle time, so the request came too late.
    // - The names are gone, so it may have been unable to open the objects.
    const bool isGone = end == EEnd::ChildEnded || end == EEnd::Failed;
    const bool hasLeft = end == EEnd::ChildEnded && m_child->GetExitStatus() == 0;
    const bool mayHaveFailed = m_mayBeLeaving || m_isSpare || m_hasAnswered || hasLeft || !m_objects->AreNamed();
    return end == EEnd::NotTaken || (isGone && mayHaveFailed && withdraw());
}

void CChildChannel::replaceChild()
{
    // A child that has not answered a case does not use up its index: the replacement gets the same one.
    const std::int32_t unused = m_hasAnswered ? sc_iNone : m_processIndex;
    startChild();
    m_processIndex = m_child ? unused : sc_iNone;
    EnsureProcessIndex();
}

void CChildChannel::EnsureProcessIndex()
{
    static std::atomic<std::int32_t> s_nextProcessIndex = 0;
    if (m_child && m_processIndex == sc_iNone)
    {
        m_processIndex = s_nextProcessIndex++;
    }
}

void CChildChannel::Submit()
{
    if (!m_child)
    {
        return;
    }
    if (m_sharing.IsNext())
    {
        m_processors.Read();
        m_processors.ShareProcessorWith(*m_child);
    }
    m_errors.BeginCase();
    constexpr std::uint32_t c_Doubt = 1000; // The child may start its idle time before the parent starts m_idle.
    m_mayBeLeaving = m_idle.GetElapsed() >= c_LongestIdleMilliseconds - c_Doubt;
    m_timer.Restart();
    submit();
}

void CChildChannel::submit()
{
    m_number = m_number % c_MostRequests + 1;
    SubmitRequest(*m_objects->buffer.GetWriteAccess(), m_number);
    m_objects->request->Set();
}

std::int32_t CChildChannel::WaitForAnswer(std::uint32_t timeOutSec, const std::function<bool()>& isCanceled)
{
    m_end = m_child ? SCaseEnd() : MakeMissingChild(m_startFailure);
    if (!m_child)
    {
        return sc_iNone;
    }
    constexpr int c_MostReplacements = 3;
    EEnd end = wait(timeOutSec, isCanceled);
    for (int count = 0; count < c_MostReplacements && m_child && isNotTaken(end); ++count)
    {
        replaceChild();
        Submit();
        end = m_child ? wait(timeOutSec, isCanceled) : EEnd::ChildEnded;
    }
    m_hasAnswered = end == EEnd::Answered;
    m_sharing.Record(m_timer.GetElapsed());
    m_idle.Restart();
    const std::int32_t processIndex = m_processIndex;
    describeEnd(end);
    if (end != EEnd::Answered)
    {
        // Ends the child, because it could still write to the buffer.
        if (m_child)
        {
            m_child->Terminate();
        }
        m_child.reset();
    }
    if (end == EEnd::TimedOut || end == EEnd::Canceled)
    {
        writeResult(end == EEnd::TimedOut ? ECaseRunResult::TimeOut : ECaseRunResult::Canceled);
    }
    return processIndex;
}

SLeavingChild CChildChannel::RequestExit()
{
    if (!m_child || !m_hasAnswered)
    {
        return {};
    }
    WriteLeaveRequest(*m_objects->buffer.GetWriteAccess());
    submit();
    return {std::move(m_child), m_errors.Release()};
}

bool CChildChannel::watch()
{
    // Does not poll if another child could use the processor, or if parent and child share a processor.
    static const std::uint32_t s_processors = LuTestSuiteUtils::GetDefaultThreadCount();
    const bool hasProcessor = !m_sharing.IsNext() && 2 * CFileQuota::CountChannels() <= s_processors;
    const CWorkBufferWriteView buffer = m_objects->buffer.GetWriteAccess();
    return hasProcessor && m_watch.Watch([&] { return IsAnswered(*buffer, m_number); });
}

LbOs::EEventWait CChildChannel::waitOnce(std::uint32_t milliseconds)
{
    const SRestored restored{m_processors};
    const LbOs::EEventWait event = m_objects->response->Wait(milliseconds, m_child.get());
    if (event == LbOs::EEventWait::TimedOut)
    {
        m_errors.Bound();
    }
    return event;
}

CChildChannel::EEnd CChildChannel::wait(std::uint32_t timeOutSec, const std::function<bool()>& isCanceled)
{
    constexpr std::uint32_t c_SliceMilliseconds = 1000;
    constexpr std::uint32_t c_TakingMilliseconds = 250;
    constexpr std::uint32_t c_CrashSliceMilliseconds = 50;
    std::uint32_t slice = m_mayBeLeaving ? c_TakingMilliseconds : c_SliceMilliseconds;
    m_crashCode.reset();
    m_crashStatus.reset();
    if (watch())
    {
        return EEnd::Answered;
    }
    while (true)
    {
        const LbOs::EEventWait event = waitOnce(m_crashCode ? c_CrashSliceMilliseconds : slice);
        // Reads the state from the buffer, because the case in the child may set or reset this event.
        if (IsAnswered(*m_objects->buffer.GetWriteAccess(), m_number))
        {
            return EEnd::Answered;
        }
        readCrash();
        if (event == LbOs::EEventWait::ChildEnded || event == LbOs::EEventWait::Failed)
        {
            return event == LbOs::EEventWait::Failed ? EEnd::Failed : EEnd::ChildEnded;
        }
        if (event == LbOs::EEventWait::TimedOut)
        {
            // A waiting child takes a request at once, so this child may be exiting. After the withdrawal it cannot
            // take the request any more, even if it is only slow.
            if (slice == c_TakingMilliseconds && withdraw())
            {
                return EEnd::NotTaken;
            }
            slice = c_SliceMilliseconds;
            remind();
        }
        if (const std::optional<EEnd> end = findEnd(timeOutSec))
        {
            return *end;
        }
        if (isCanceled())
        {
            return EEnd::Canceled;
        }
    }
}

bool CChildChannel::withdraw()
{
    return WithdrawRequest(*m_objects->buffer.GetWriteAccess(), m_number);
}

void CChildChannel::remind()
{
    if (IsSubmitted(*m_objects->buffer.GetWriteAccess(), m_number))
    {
        m_objects->request->Set();
    }
}

/// Examines a child that has crashed and lets it end. A crashed child waits for Release, but only for a short time.
void CChildChannel::readCrash()
{
    const auto crashed = m_crashWatch ? m_crashWatch->FindCrash() : std::nullopt;
    if (crashed)
    {
        m_crashTimer.Restart();
        examine(crashed);
        m_crashWatch->Release();
        m_crashCode = crashed->code;
    }
}

void CChildChannel::examine(const std::optional<LbOs::SCrashedThread>& crashed)
{
    // A crashed child waits for 1.5 s before it ends. Reading the stacks takes at most 1.2 s; the dump may take the
    // rest of the limit.
    constexpr std::chrono::milliseconds c_Longest(1900);
    const auto end = std::chrono::steady_clock::now() + c_Longest;
    if (m_settings.takeStacks)
    {
        m_end.stacks = LbOs::ReadStacks(*m_child, crashed);
    }
    if (!m_settings.dumpDirectory.empty())
    {
        const auto left = end - std::chrono::steady_clock::now();
        writeDump(crashed, std::chrono::duration_cast<std::chrono::milliseconds>(left));
    }
}

void CChildChannel::writeDump(const std::optional<LbOs::SCrashedThread>& crashed, std::chrono::milliseconds longest)
{
    const std::wstring name = makeDumpName(*m_objects->buffer.GetReadAccess(), m_child->GetId());
    const std::wstring path = LbPath::WithSeparator(m_settings.dumpDirectory) + name;
    LbOs::SDump dump = LbOs::WriteDump(*m_child, crashed, path, longest);
    m_end.dumpFile = std::move(dump.path);
    m_end.dumpFailure = std::move(dump.failure);
}

std::optional<CChildChannel::EEnd> CChildChannel::findEnd(std::uint32_t timeOutSec)
{
    constexpr std::uint64_t c_NanosecondsPerSecond = 1'000'000'000U;
    // After a crash, the system may write the memory of the process to the disk before the process ends. The result of
    // the case waits for that at most this long.
    constexpr std::uint64_t c_LongestCrashMilliseconds = 2'000;
    if (!m_crashCode)
    {
        const bool isOverdue = m_timer.GetElapsed() / c_NanosecondsPerSecond > timeOutSec;
        return isOverdue ? std::optional(EEnd::TimedOut) : std::nullopt;
    }
    if (m_crashTimer.GetElapsed() < c_LongestCrashMilliseconds)
    {
        return std::nullopt;
    }
    // Stores the status now, because Terminate replaces it. If the child is still running, uses the status of its
    // crash: on Windows, an abandoned dump may still hold the child.
    m_crashStatus = m_child->GetExitStatus().value_or(LbOs::GetCrashStatus(*m_crashCode));
    m_child->Terminate();
    return EEnd::ChildEnded;
}

void CChildChannel::describeEnd(EEnd end)
{
    if (!m_child)
    {
        m_end = MakeMissingChild(m_startFailure);
        return;
    }
    m_end.kind = toCaseEnd(end);
    m_end.processId = m_child->GetId();
    if (end == EEnd::ChildEnded || end == EEnd::TimedOut)
    {
        m_end.lastLines = m_errors.ReadLastLines();
    }
    if (end == EEnd::TimedOut)
    {
        examine(std::nullopt);
    }
    if (end == EEnd::ChildEnded)
    {
        m_end.exitStatus = m_crashStatus ? m_crashStatus : m_child->GetExitStatus();
        FindReason(m_end);
    }
}

ECaseEnd CChildChannel::toCaseEnd(EEnd end)
{
    switch (end)
    {
    case EEnd::Answered:
        return ECaseEnd::Returned;
    case EEnd::TimedOut:
        return ECaseEnd::TimedOut;
    case EEnd::Canceled:
        return ECaseEnd::Canceled;
    case EEnd::ChildEnded:
        return ECaseEnd::ChildEnded;
    default:
        return ECaseEnd::Refused;
    }
}

void CChildChannel::writeResult(ECaseRunResult result)
{
    m_objects->buffer.GetWriteAccess()->result = static_cast<std::uint32_t>(result);
}

} // namespace LuTestSuiteRun

#include "testing/lutestsuite/run/executor.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <string_view>

#include "base/givenstream.h"
#include "base/idebugging.h"
#include "base/lbexception.h"
#include "base/lbtimer.h"
#include "base/lustream.h"
#include "base/luunittest.h"
#include "base/os/forkmark.h"
#include "base/os/process.h"
#include "base/os/signalstate.h"
#include "testing/lutestsuite/environment/unittestfactory.h"
#include "testing/lutestsuite/environment/workingdirectory.h"
#include "testing/lutestsuite/heap/warmup.h"
#include "testing/lutestsuite/lutestsuiteheaptracker.h"
#include "testing/lutestsuite/run/floatingpoint.h"

namespace LuTestSuiteRun
{

namespace
{

/// Maps the result of a sub-test to the result of its case. A number outside the enumeration becomes Unknown.
ECaseRunResult toCaseResult(LuUnitTest::EResult result)
{
    switch (result)
    {
    case LuUnitTest::eR_NoInput:
        return ECaseRunResult::NoInput;
    case LuUnitTest::eR_Passed:
        return ECaseRunResult::Ok;
    case LuUnitTest::eR_Failed:
        return ECaseRunResult::Error;
    case LuUnitTest::eR_Exception:
        return ECaseRunResult::Exception;
    case LuUnitTest::eR_Different:
        return ECaseRunResult::Different;
    default:
        return ECaseRunResult::Unknown;
    }
}

void setDebuggingOptions(LuUnitTest& unitTest, const SParams& params)
{
    auto* const debugging = dynamic_cast<IDebugging*>(&unitTest);
    if (debugging == nullptr)
    {
        return;
    }
    const auto set = [debugging](IDebugging::EOption option, bool value) {
        if (debugging->IsOptionSupported(option))
        {
            debugging->SetOption(option, value);
        }
    };
    set(IDebugging::eO_DebuggingSerialization, params.deDebuggingSerialization);
    set(IDebugging::eO_PredefinedBreakPoints, params.dePredefinedBreakPoints);
    set(IDebugging::eO_VerboseOutput, params.deVerboseOutput);
}

/// Stores messages immediately, so that those written before a crash are in the buffer.
class CBufferStream : public LbGivenStream, public INonCopyable
{
public:
    explicit CBufferStream(SWorkBuffer& buffer) : m_buffer(buffer) {}

    void Write(std::wstring_view text) override
    {
        m_isFull = m_isFull || (!IsInCopy() && !AppendMessages(m_buffer, text));
    }

    /// True in a process that the test has forked. Such a process may also reach the end of the case, but must not
    /// write to the buffer, which may belong to another case by then.
    bool IsInCopy() const { return LbOs::GetForkMark() != m_forkMark; }

private:
    SWorkBuffer& m_buffer;
    std::uint64_t m_forkMark = LbOs::GetForkMark();
    bool m_isFull = false;
};

/// Stores the duration of its scope in nanoseconds, even if an exception ends the scope.
class CStopwatch : public INonCopyable
{
public:
    explicit CStopwatch(std::uint64_t& time) : m_time(time) {}
    ~CStopwatch() { m_time = m_timer.GetElapsed(); }

private:
    std::uint64_t& m_time;
    LbTimer m_timer{LbTimer::eR_NanoSecond};
};

/// Creates the unit test and runs the sub-test; exceptions pass through. The caller destroys the unit test.
ECaseRunResult runSubtest(const SWorkBuffer& buffer, const SParams& params, std::unique_ptr<LuUnitTest>& unitTest,
                          LbGivenStream& messages, std::uint64_t& time)
{
    unitTest = LuTestSuite::CreateUnitTest(LoadName(buffer.className));
    if (!unitTest)
    {
        return ECaseRunResult::NoMatchingCase;
    }
    unitTest->SetMessageStream(&messages);
    messages.SetDataDirectory(LoadName(buffer.dataDirectory));
    unitTest->SetDataDirectory(messages.GetDataDirectory());
    unitTest->SelectSubtest(LoadName(buffer.caseName), LoadLikelySubtest(buffer));
    unitTest->InitSubtests();
    setDebuggingOptions(*unitTest, params);
    unitTest->PrepareSubtest();
    if (!unitTest->HasSelectedSubtest())
    {
        return ECaseRunResult::NoMatchingCase;
    }
    const CStopwatch stopwatch(time);
    return toCaseResult(unitTest->RunSelectedSubtest());
}

/// Runs the case and releases everything that the runner has allocated for it, so that memory that is still allocated
/// afterwards is the case's leak.
ECaseRunResult runCase(SWorkBuffer& buffer, const SParams& params)
{
    CBufferStream messages(buffer);
    std::unique_ptr<LuUnitTest> unitTest;
    ECaseRunResult result = ECaseRunResult::Exception;
    std::uint64_t time = 0;
    try
    {
        result = runSubtest(buffer, params, unitTest, messages, time);
    }
    catch (...)
    {
        // LuUnitTest itself reports exceptions of sub-tests; the exception here comes from another operation of the
        // class.
        messages.WriteFormat(L"\t\tERROR: %s\n", LbDescribeCurrentException());
    }
    if (messages.IsInCopy())
    {
        LbOs::EndProcess(EXIT_FAILURE);
    }
    buffer.time = time;
    return result;
}

/// Turns a heap dump into information lines, after a heading.
std::wstring toInfoLines(std::wstring_view text)
{
    std::wstring lines = L"\t\tINFO:  Dump()...\n";
    while (!text.empty())
    {
        const std::size_t end = std::min(text.find(L'\n'), text.size());
        lines.append(L"\t\tINFO:  ").append(text.substr(0, end)).append(L"\n");
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

void storeHeapUse(SWorkBuffer& buffer, const SParams& params, LuTestSuiteHeapTracker& tracker)
{
    // Deactivates the tracker first, because reading and writing the figures must not change them.
    tracker.Deactivate();
    const std::int64_t growth = tracker.GetCurrentAlloc();
    buffer.memoryGrowth = static_cast<std::uint64_t>(growth);
    buffer.allocations = tracker.GetMallocCount() + tracker.GetReallocCount();
    buffer.peakMemory = static_cast<std::uint64_t>(tracker.GetCurrentMax());
    if (params.dumpHeap && growth != 0)
    {
        LuStreamWriteTextMemory dump;
        tracker.dump(dump);
        AppendMessages(buffer, toInfoLines(dump.GetText()));
    }
}

ECaseRunResult runTracked(SWorkBuffer& buffer)
{
    // An earlier case may have changed the working directory.
    LuTestSuite::EnterExecutableDirectory();
    const SParams params = LoadParams(buffer);
    if (params.trackHeap)
    {
        LuTestSuite::WarmUpThread();
    }
    LuTestSuiteHeapTracker tracker(true, params.trackHeap);
    tracker.ObserveID(params.breakAllocId);
    tracker.ObserveSize(params.breakAllocSize);
    try
    {
        const ECaseRunResult result = runCase(buffer, params);
        if (params.trackHeap)
        {
            storeHeapUse(buffer, params, tracker);
        }
        return result;
    }
    catch (...)
    {
        // The process ran out of memory while the end of the case was recorded.
        return ECaseRunResult::Exception;
    }
}

/// Restores the signal state of the thread and the process after a case, for the next one.
class CProcessState : public INonCopyable
{
public:
    CProcessState() : m_lock(s_running) {}

    ~CProcessState()
    {
        LbOs::RestoreSignals();
        m_lock.unlock();
        // Timers belong to the process: while other cases run, they may be theirs.
        if (const std::unique_lock alone(s_running, std::try_to_lock); alone)
        {
            LbOs::DisarmTimers();
        }
    }

private:
    static inline std::shared_mutex s_running; ///< shared by the cases that run in this process

    std::shared_lock<std::shared_mutex> m_lock;
};

ECaseRunResult runAndRestore(SWorkBuffer& buffer)
{
    const CProcessState process;
    const CFloatingPointState floatingPoint;
    return runTracked(buffer);
}

} // namespace

void ExecuteInBuffer(SWorkBuffer& buffer) noexcept
{
    // Stores the result last: a case that crashes in a destructor, or by a signal that it has blocked, has no result.
    buffer.result = static_cast<std::uint32_t>(runAndRestore(buffer));
}

} // namespace LuTestSuiteRun

#include "testing/lutestsuite/run/executor.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "base/idebugging.h"
#include "base/lbdiagnostics.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbtimer.h"
#include "base/lustream.h"
#include "base/luunittest.h"
#include "base/os/directories.h"
#include "base/os/forkmark.h"
#include "base/os/process.h"
#include "testing/lutestsuite/environment/unittestfactory.h"
#include "testing/lutestsuite/heap/warmup.h"
#include "testing/lutestsuite/lutestsuiteheaptracker.h"

namespace LuTestSuiteRun
{

namespace
{

/// What a sub-test's own result means for its case; anything else leaves the case "Unknown".
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

/// Messages as they come: what a test wrote before it crashed is in the buffer.
class CBufferStream : public LuStreamWriteText, public INonCopyable
{
public:
    explicit CBufferStream(SWorkBuffer& buffer) : m_buffer(buffer) {}

    void Write(std::wstring_view text) override
    {
        m_isFull = m_isFull || (!IsInCopy() && !AppendMessages(m_buffer, text));
    }

    /// A test that forks has its case twice. By the time the copy writes the buffer may be another case's.
    bool IsInCopy() const { return LbOs::GetForkMark() != m_forkMark; }

private:
    SWorkBuffer& m_buffer;
    std::uint64_t m_forkMark = LbOs::GetForkMark();
    bool m_isFull = false;
};

/// Stores the time of its scope, even if an exception ends it.
class CStopwatch : public INonCopyable
{
public:
    explicit CStopwatch(std::uint64_t& time) : m_time(time) {}
    ~CStopwatch() { m_time = m_timer.GetElapsed(); }

private:
    std::uint64_t& m_time;
    LbTimer m_timer{LbTimer::eR_NanoSecond};
};

/// The case as far as it may throw. The created unit test is the caller's, who destroys it.
ECaseRunResult runSubtest(const SWorkBuffer& buffer, const SParams& params, std::unique_ptr<LuUnitTest>& unitTest,
                          LuStreamWriteText& messages, std::uint64_t& time)
{
    unitTest = LuTestSuite::CreateUnitTest(LoadName(buffer.className));
    if (!unitTest)
    {
        return ECaseRunResult::NoMatchingCase;
    }
    unitTest->SetMessageStream(&messages);
    unitTest->SetDataDirectory(LoadName(buffer.dataDirectory));
    unitTest->SelectSubtest(LoadName(buffer.caseName));
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

/// The case with everything that it allocates, all of it released again when this returns; what is left is the case's.
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
        // A sub-test's own exceptions are reported by LuUnitTest. These come from what surrounds it.
        messages.WriteFormat(L"\t\tERROR: %s\n", LbDescribeCurrentException());
    }
    if (messages.IsInCopy())
    {
        LbOs::EndProcess(EXIT_FAILURE);
    }
    buffer.time = time;
    return result;
}

/// Each line behind the mark of information lines.
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
    // What is made of the figures is no part of them.
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

/// Cases start in the executable's folder, wherever the case before has gone.
void restoreWorkingDirectory() noexcept
try
{
    static const LbOs::CHomeDirectory s_home(LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable));
    if (!s_home.Ensure())
    {
        LbDiagnostics::Trace(L"LuTestSuiteRun: the executable's folder cannot be made the working directory");
    }
}
catch (...)
{
    // Without memory for a path the case goes without, too.
}

ECaseRunResult runTracked(SWorkBuffer& buffer)
{
    restoreWorkingDirectory();
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
        // Memory ran out while the case's own end was written down.
        return ECaseRunResult::Exception;
    }
}

} // namespace

void ExecuteInBuffer(SWorkBuffer& buffer) noexcept
{
    // Last of all: a case that takes its process down on the way out has no result.
    buffer.result = static_cast<std::uint32_t>(runTracked(buffer));
}

} // namespace LuTestSuiteRun

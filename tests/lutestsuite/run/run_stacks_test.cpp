// The call stacks of cases that crash their child process or exceed the time limit.

#include <algorithm>
#include <optional>
#include <ostream>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbpath.h"
#include "base/lbtimer.h"
#include "base/os/crash.h"
#include "tests/support/eventrecorder.h"
#include "tests/support/externalruntest.h"
#include "tests/support/probe.h"
#include "tests/support/scopedenvironment.h"

namespace
{

using LbOs::SStackFrame;
using LbOs::SThreadStack;
using LuTestSuiteRun::ECaseEnd;

class RunStacks : public ExternalRunTest
{
protected:
    void SetUp() override
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "sanitizers handle crashes themselves";
#endif
    }

    /// Runs the case in a child that has run another case; returns how the case ended.
    EventRecorder::SEnd RunFor(const std::wstring& caseName, bool takeStacks = true)
    {
        LuTestSuiteSetup setup = MakeCrash({L"vorher", caseName});
        setup.unitTests[0].cases[1].parameters[L"TimeOutSec"] = std::uint32_t{0};
        LuTestSuiteRun::SRunOptions options;
        options.takeStacks = takeStacks;
        LuTestSuiteRun::Run(setup, m_environment, m_events, options);
        return m_events.ends.at(1);
    }

    EventRecorder m_events;
};

/// A case, how it ends, and a function on the stack of the thread at fault.
struct SFault
{
    const wchar_t* caseName;
    ECaseEnd end;
    const wchar_t* function;
};

void PrintTo(const SFault& fault, std::ostream* stream)
{
    *stream << LbEncoding::ToUtf8(fault.caseName);
}

class RunStacksOf : public RunStacks, public testing::WithParamInterface<SFault>
{
};

TEST_P(RunStacksOf, NameTheFunctionAtFault)
{
    const EventRecorder::SEnd end = RunFor(GetParam().caseName);

    EXPECT_EQ(end.end.kind, GetParam().end);
    ASSERT_FALSE(end.end.stacks.empty());
    const SThreadStack& stack = end.end.stacks.front();
    EXPECT_TRUE(stack.isAtFault);
    EXPECT_LE(stack.frames.size(), SThreadStack::sc_uiMostFrames);
    EXPECT_TRUE(std::ranges::any_of(stack.frames, [](const SStackFrame& frame) {
        // On Windows, stacks rarely name functions that a module does not export, so their names are not checked.
        const bool isNamed =
            LbPath::c_Separator == L'\\' || frame.function.find(GetParam().function) != std::wstring::npos;
        return isNamed && frame.offset != 0 && frame.module.find(L"crashmodels") != std::wstring::npos;
    })) << LbEncoding::ToUtf8(end.info.messages);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RunStacksOf,
    testing::Values(SFault{L"Zugriffsverletzung", ECaseEnd::ChildEnded, L"CCrashModel::InitSubtests()"},
                    SFault{L"Stapelüberlauf", ECaseEnd::ChildEnded, L"overflowStack(int)"},
                    SFault{L"abort", ECaseEnd::ChildEnded, L"CCrashModel::InitSubtests()"},
                    SFault{L"terminate", ECaseEnd::ChildEnded, L"CCrashModel::InitSubtests()"},
                    SFault{L"Division durch null", ECaseEnd::ChildEnded, L"CCrashModel::InitSubtests()"},
                    SFault{L"Aufruf von null", ECaseEnd::ChildEnded, L"CCrashModel::InitSubtests()"},
                    SFault{L"Exception im Thread", ECaseEnd::ChildEnded, L"throwOutOfThread()"},
                    SFault{L"Endlosschleife", ECaseEnd::TimedOut, L"CCrashModel::InitSubtests()"},
                    SFault{L"Verklemmung", ECaseEnd::TimedOut, L"CCrashModel::InitSubtests()"}));

TEST_F(RunStacks, ShowTheCallsThatOverflowTheStack)
{
    const EventRecorder::SEnd end = RunFor(L"Stapelüberlauf");

    ASSERT_FALSE(end.end.stacks.empty());
    const auto isInModule = [](const SStackFrame& frame) {
        return frame.module.find(L"crashmodels") != std::wstring::npos;
    };
    EXPECT_GT(std::ranges::count_if(end.end.stacks.front().frames, isInModule), 1)
        << LbEncoding::ToUtf8(end.info.messages);
}

TEST_F(RunStacks, FollowTheReasonInTheMessages)
{
    const EventRecorder::SEnd end = RunFor(L"Zugriffsverletzung");

    const std::wstring& messages = end.info.messages;
    const std::size_t reason = messages.find(L"\t\tERROR: " + end.end.reason);
    const std::size_t stack =
        messages.find(L"\t\tINFO:  Stapel von Thread " + std::to_wstring(end.end.stacks.at(0).thread) +
                      L" (Ursache):\n\t\tINFO:    #0 ");
    EXPECT_LT(reason, stack);
    EXPECT_NE(stack, std::wstring::npos) << LbEncoding::ToUtf8(messages);
}

TEST_F(RunStacks, AreNotReadUnlessRequested)
{
    const EventRecorder::SEnd end = RunFor(L"Zugriffsverletzung", false);

    EXPECT_TRUE(end.end.stacks.empty());
    EXPECT_EQ(end.info.messages.find(L"Stapel von"), std::wstring::npos);
}

TEST_F(RunStacks, DoNotChangeTheReason)
{
    const std::wstring without = RunFor(L"abort", false).end.reason;
    m_events.ends.clear();

    EXPECT_EQ(RunFor(L"abort").end.reason, without);
}

TEST_F(RunStacks, AreReadForACrashThatIsNoticedAfterTheTimeLimit)
{
    CProbeLine line;
    const ScopedEnvironmentVariable environment(L"LUTESTSUITE_TEST_LINE", line.GetName());
    LuTestSuiteSetup setup = MakeCrash({L"Absturz auf Verlangen"});
    setup.unitTests[0].cases[0].parameters[L"TimeOutSec"] = std::uint32_t{1};
    std::optional<LbTimer> timer;
    m_events.onLine = [&timer](const std::wstring& text) {
        if (text.starts_with(L"started"))
        {
            timer.emplace(LbTimer::eR_MilliSecond);
        }
    };
    // The run calls this function just after it has checked the limit, for the first time after a second. The function
    // waits until the limit has passed and then makes the case crash, so the run notices the crash after the limit.
    setup.checkCallback = [&] {
        constexpr std::uint64_t c_Limit = 2000;
        if (timer && timer->GetElapsed() > c_Limit / 4)
        {
            while (timer->GetElapsed() <= c_Limit)
            {
                std::this_thread::yield();
            }
            line.Ask();
        }
        return false;
    };
    LuTestSuiteRun::SRunOptions options;
    options.takeStacks = true;
    LuTestSuiteRun::Run(setup, m_environment, m_events, options);

    const EventRecorder::SEnd& end = m_events.ends.at(0);
    EXPECT_EQ(end.end.kind, ECaseEnd::ChildEnded);
    EXPECT_FALSE(end.end.stacks.empty());
    EXPECT_TRUE(LbOs::MayBeAbort(end.end.exitStatus.value_or(0))) << LbEncoding::ToUtf8(end.end.reason);
}

TEST_F(RunStacks, IncludeAllThreads)
{
    // The case starts a thread, which waits for a lock that the case's own thread holds.
    const EventRecorder::SEnd end = RunFor(L"Verklemmung");

    EXPECT_TRUE(std::ranges::any_of(end.end.stacks, [](const SThreadStack& stack) {
        return !stack.isAtFault && std::ranges::any_of(stack.frames, [](const SStackFrame& frame) {
            return LbPath::c_Separator == L'\\' ? frame.module.find(L"crashmodels") != std::wstring::npos
                                                : frame.function.find(L"deadLock()") != std::wstring::npos;
        });
    })) << LbEncoding::ToUtf8(end.info.messages);
}

TEST_F(RunStacks, AreMissingForACaseThatEndsItsProcessItself)
{
    EXPECT_TRUE(RunFor(L"exit").end.stacks.empty());
}

} // namespace

#include <atomic>
#include <thread>

#include "base/os/platform.h"
#include "base/os/threadfreeze.h"
#include "tests/lutestsuite/heap/patchenginetest.h"
#include "tests/support/stuckthread.h"

using LuTestSuite::EPatchStatus;

namespace
{

/// Tests with threads that execute the code to be patched.
class CPatchEngineThreads : public CPatchEngineTest
{
};

} // namespace

namespace
{

/// True if a thread's next instruction lies in the range.
bool isThreadIn(const void* begin, std::size_t size)
{
    LbOs::CThreadFreezer threads;
    if (!threads.Freeze(2000))
    {
        return false;
    }
    const auto address = reinterpret_cast<std::uintptr_t>(begin);
    bool isFound = false;
    for (std::size_t thread = 0; thread < threads.GetCount(); ++thread)
    {
        isFound = isFound || threads.GetInstructionPointer(thread) - address < size;
    }
    return isFound;
}

} // namespace

TEST_F(CPatchEngineThreads, ThreadInsideTheReplacedBytesIsMovedToTheTrampolineAndBack)
{
    // nop; pause; jump back to pause: loops until the test changes the destination of the jump
    const CodePages code{0x90, 0xF3, 0x90, 0xEB, 0xFC, 0xB8, 1, 0, 0, 0, 0xC3};
    std::atomic<int> result = 0;
    std::thread thread([&code, &result] { result = code.Call(); });
    while (!isThreadIn(code.Get(), 5))
    {
        std::this_thread::yield();
    }
    EXPECT_EQ(patch(code.Get()), EPatchStatus::Success);
    EXPECT_TRUE(isThreadIn(m_trampoline, LuTestSuite::STrampoline::sc_uiCapacity));
    EXPECT_EQ(m_engine.ShutDown(), EPatchStatus::Success);
    EXPECT_TRUE(isThreadIn(code.Get(), 5));
    code.GetBytes()[4] = 0; // jumps to the next instruction
    thread.join();
    EXPECT_EQ(result, 1);
}

TEST_F(CPatchEngineThreads, ThreadsMayStartAndEndWhilePatchesChange)
{
    std::atomic<bool> isDone = false;
    std::atomic<int> strange = 0;
    std::thread parent([&] {
        while (!isDone)
        {
            std::thread([&] {
                const int result = m_returnsOne.Call();
                strange += result != 1 && result != c_Detoured ? 1 : 0;
            }).join();
        }
    });
    ASSERT_EQ(m_engine.Create(m_returnsOne.Get(), c_Detour, m_trampoline), EPatchStatus::Success);
    for (int round = 0; round < 200; ++round)
    {
        ASSERT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::Success);
        ASSERT_EQ(m_engine.Disable(m_returnsOne.Get()), EPatchStatus::Success);
    }
    isDone = true;
    parent.join();
    EXPECT_EQ(strange, 0);
}

// Windows can stop any thread, so the changes succeed there.
TEST_F(CPatchEngineThreads, ThreadThatCannotBeStoppedPreventsAnyChange)
{
    const bool canStop = LbOs::c_PathSeparator == L'\\';
    StuckThread thread;
    EXPECT_EQ(patch(m_returnsOne.Get()), canStop ? EPatchStatus::Success : EPatchStatus::NotProtectable);
    EXPECT_EQ(m_returnsOne.Call(), canStop ? c_Detoured : 1);
    EXPECT_EQ(m_engine.EnableAll(), canStop ? EPatchStatus::Success : EPatchStatus::NotProtectable);
    thread.Release();
    EXPECT_EQ(m_engine.EnableAll(), EPatchStatus::Success);
    EXPECT_EQ(m_returnsOne.Call(), c_Detoured);
}

TEST_F(CPatchEngineThreads, ShutDownThatCannotStopAThreadCanBeRepeated)
{
    ASSERT_EQ(patch(m_returnsOne.Get()), EPatchStatus::Success);
    const bool canStop = LbOs::c_PathSeparator == L'\\';
    StuckThread thread;
    EXPECT_EQ(m_engine.ShutDown(), canStop ? EPatchStatus::Success : EPatchStatus::NotProtectable);
    EXPECT_EQ(m_returnsOne.Call(), canStop ? 1 : c_Detoured);
    EXPECT_EQ(CodePages::Call(m_trampoline), 1);
    thread.Release();
    EXPECT_EQ(m_engine.ShutDown(), canStop ? EPatchStatus::NotInitialized : EPatchStatus::Success);
    EXPECT_EQ(m_returnsOne.Call(), 1);
}

namespace
{

void* s_interrupted = nullptr;
int s_interruptedResult = 0;

} // namespace

TEST_F(CPatchEngineThreads, ThreadMayReturnIntoARetiredTrampoline)
{
    // nop (four times); int3; mov eax, 5; ret
    const CodePages code{0x90, 0x90, 0x90, 0x90, 0xCC, 0xB8, 5, 0, 0, 0, 0xC3};
    ASSERT_EQ(patch(code.Get()), EPatchStatus::Success);
    s_interrupted = m_trampoline;
    StuckThread thread([] { s_interruptedResult = CodePages::Call(s_interrupted); }, false);
    EXPECT_EQ(m_engine.ShutDown(), EPatchStatus::Success);
    thread.Release();
    EXPECT_EQ(s_interruptedResult, 5);
}

TEST_F(CPatchEngineThreads, FunctionThatIsPatchedAgainReusesItsTrampoline)
{
    ASSERT_EQ(patch(m_returnsOne.Get()), EPatchStatus::Success);
    const void* const first = m_trampoline;
    ASSERT_EQ(m_engine.ShutDown(), EPatchStatus::Success);
    ASSERT_EQ(m_engine.Initialize(), EPatchStatus::Success);
    ASSERT_EQ(patch(m_returnsOne.Get()), EPatchStatus::Success);
    EXPECT_EQ(m_trampoline, first);
    EXPECT_EQ(m_returnsOne.Call(), c_Detoured);
    EXPECT_EQ(CodePages::Call(m_trampoline), 1);
}

TEST_F(CPatchEngineThreads, ChangedCodeAtTheSameAddressGetsANewTrampoline)
{
    ASSERT_EQ(patch(m_returnsOne.Get()), EPatchStatus::Success);
    ASSERT_EQ(m_engine.ShutDown(), EPatchStatus::Success);
    m_returnsOne.GetBytes()[1] = 3;
    ASSERT_EQ(m_engine.Initialize(), EPatchStatus::Success);
    ASSERT_EQ(patch(m_returnsOne.Get()), EPatchStatus::Success);
    EXPECT_EQ(CodePages::Call(m_trampoline), 3);
}

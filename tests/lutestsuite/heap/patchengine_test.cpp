#include "testing/lutestsuite/heap/patchengine.h"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/os/heapfunctions.h"
#include "base/os/platform.h"
#include "base/os/threadfreeze.h"
#include "tests/lutestsuite/heap/codepages.h"
#include "tests/support/stuckthread.h"

using LuTestSuite::CPatchEngine;
using LuTestSuite::EPatchStatus;

namespace
{

constexpr int c_Detoured = 1000;

int detour()
{
    return c_Detoured;
}
void* const c_Detour = reinterpret_cast<void*>(detour);

/// An engine that is ready, and shut down at the end.
class CPatchEngineTest : public testing::Test
{
protected:
    CPatchEngineTest() { m_engine.Initialize(); }
    void SetUp() override
    {
        if (LbOs::GetHeapFunctions().malloc == nullptr)
        {
            GTEST_SKIP() << "a sanitizer patches functions itself, and holds signals back";
        }
    }
    ~CPatchEngineTest() override { m_engine.ShutDown(); }

    EPatchStatus patch(void* target)
    {
        const EPatchStatus status = m_engine.Create(target, c_Detour, m_trampoline);
        return status == EPatchStatus::Success ? m_engine.Enable(target) : status;
    }

    /// The function gives `result` unpatched, by way of the trampoline, and after each way back.
    void expectMovable(const CodePages& code, int result)
    {
        ASSERT_EQ(code.Call(), result);
        ASSERT_EQ(patch(code.Get()), EPatchStatus::Success);
        EXPECT_EQ(code.Call(), c_Detoured);
        EXPECT_EQ(CodePages::Call(m_trampoline), result);
        EXPECT_EQ(m_engine.Disable(code.Get()), EPatchStatus::Success);
        EXPECT_EQ(code.Call(), result);
        EXPECT_EQ(CodePages::Call(m_trampoline), result);
        EXPECT_EQ(m_engine.Enable(code.Get()), EPatchStatus::Success);
        EXPECT_EQ(code.Call(), c_Detoured);
        EXPECT_EQ(m_engine.ShutDown(), EPatchStatus::Success);
        EXPECT_EQ(code.Call(), result);
        EXPECT_EQ(m_trampoline, code.Get());
    }

    CPatchEngine m_engine;
    void* m_trampoline = nullptr;
    const CodePages m_returnsOne{0xB8, 1, 0, 0, 0, 0xC3};
};

} // namespace

TEST_F(CPatchEngineTest, SecondInitializationIsRefused)
{
    EXPECT_EQ(m_engine.Initialize(), EPatchStatus::AlreadyInitialized);
    EXPECT_EQ(static_cast<int>(EPatchStatus::AlreadyInitialized), 1);
}

TEST_F(CPatchEngineTest, NothingWorksBeforeInitialization)
{
    EXPECT_EQ(m_engine.ShutDown(), EPatchStatus::Success);
    EXPECT_EQ(m_engine.Create(m_returnsOne.Get(), c_Detour, m_trampoline), EPatchStatus::NotInitialized);
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::NotInitialized);
    EXPECT_EQ(m_engine.EnableAll(), EPatchStatus::NotInitialized);
    EXPECT_EQ(m_engine.Disable(m_returnsOne.Get()), EPatchStatus::NotInitialized);
    EXPECT_EQ(m_engine.ShutDown(), EPatchStatus::NotInitialized);
    EXPECT_EQ(static_cast<int>(EPatchStatus::NotInitialized), 2);
}

TEST_F(CPatchEngineTest, OneTargetHasOnePatch)
{
    EXPECT_EQ(m_engine.Create(m_returnsOne.Get(), c_Detour, m_trampoline), EPatchStatus::Success);
    EXPECT_EQ(m_engine.Create(m_returnsOne.Get(), c_Detour, m_trampoline), EPatchStatus::AlreadyCreated);
    EXPECT_EQ(static_cast<int>(EPatchStatus::AlreadyCreated), 3);
}

TEST_F(CPatchEngineTest, UnknownTargetsAreTold)
{
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::NotCreated);
    EXPECT_EQ(m_engine.Disable(m_returnsOne.Get()), EPatchStatus::NotCreated);
    EXPECT_EQ(static_cast<int>(EPatchStatus::NotCreated), 4);
}

TEST_F(CPatchEngineTest, PatchesAreEnabledAndDisabledOnce)
{
    ASSERT_EQ(m_engine.Create(m_returnsOne.Get(), c_Detour, m_trampoline), EPatchStatus::Success);
    EXPECT_EQ(m_engine.Disable(m_returnsOne.Get()), EPatchStatus::AlreadyDisabled);
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::Success);
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::AlreadyEnabled);
    EXPECT_EQ(m_engine.Disable(m_returnsOne.Get()), EPatchStatus::Success);
    EXPECT_EQ(m_engine.Disable(m_returnsOne.Get()), EPatchStatus::AlreadyDisabled);
    EXPECT_EQ(static_cast<int>(EPatchStatus::AlreadyEnabled), 5);
    EXPECT_EQ(static_cast<int>(EPatchStatus::AlreadyDisabled), 6);
}

TEST_F(CPatchEngineTest, DataIsNeitherTargetNorDetour)
{
    int data = 0;
    EXPECT_EQ(m_engine.Create(&data, c_Detour, m_trampoline), EPatchStatus::NotExecutable);
    EXPECT_EQ(m_engine.Create(m_returnsOne.Get(), &data, m_trampoline), EPatchStatus::NotExecutable);
    EXPECT_EQ(m_engine.Create(nullptr, c_Detour, m_trampoline), EPatchStatus::NotExecutable);
    EXPECT_EQ(m_trampoline, nullptr);
    EXPECT_EQ(static_cast<int>(EPatchStatus::NotExecutable), 7);
}

namespace
{

/// Calls of ProtectPages that go well before all fail.
int s_goodProtections = 0;

bool protectSeldom(void* address, std::size_t size, std::uint32_t protection) noexcept
{
    return s_goodProtections-- > 0 && LbOs::ProtectPages(address, size, protection);
}

/// Two functions and an engine whose pages cannot be protected but a few times. Freezes threads, as CPatchEngineTest.
class CPatchEngineProtection : public testing::Test
{
protected:
    void SetUp() override
    {
        if (LbOs::GetHeapFunctions().malloc == nullptr)
        {
            GTEST_SKIP() << "a sanitizer patches functions itself, and holds signals back";
        }
        m_engine.Initialize();
        ASSERT_EQ(m_engine.Create(m_returnsOne.Get(), c_Detour, m_first), EPatchStatus::Success);
        ASSERT_EQ(m_engine.Create(m_returnsTwo.Get(), c_Detour, m_second), EPatchStatus::Success);
    }
    ~CPatchEngineProtection() override
    {
        s_goodProtections = 100;
        m_engine.ShutDown();
    }

    CPatchEngine m_engine{{.protect = protectSeldom}};
    const CodePages m_returnsOne{0xB8, 1, 0, 0, 0, 0xC3};
    const CodePages m_returnsTwo{0xB8, 2, 0, 0, 0, 0xC3};
    void* m_first = nullptr;
    void* m_second = nullptr;
};

} // namespace

TEST_F(CPatchEngineProtection, PagesThatStayReadOnlyStayUnpatched)
{
    s_goodProtections = 0;
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::NotProtectable);
    EXPECT_EQ(m_returnsOne.Call(), 1);
    EXPECT_EQ(m_engine.Disable(m_returnsOne.Get()), EPatchStatus::AlreadyDisabled);
    EXPECT_EQ(static_cast<int>(EPatchStatus::NotProtectable), 10);
}

TEST_F(CPatchEngineProtection, PatchIsUndoneWhenTheProtectionCannotBeRestored)
{
    s_goodProtections = 1;
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::NotProtectable);
    EXPECT_EQ(m_returnsOne.Call(), 1);
    s_goodProtections = 2;
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::Success);
    s_goodProtections = 1;
    EXPECT_EQ(m_engine.Disable(m_returnsOne.Get()), EPatchStatus::NotProtectable);
    EXPECT_EQ(m_returnsOne.Call(), c_Detoured);
}

TEST_F(CPatchEngineProtection, AllAreEnabledOrNone)
{
    // Both protections of the first one, none of the second, both again to undo the first.
    static int s_call = 0;
    s_call = 0;
    CPatchEngine engine({.protect = [](void* address, std::size_t size, std::uint32_t protection) noexcept {
        return ++s_call != 3 && LbOs::ProtectPages(address, size, protection);
    }});
    engine.Initialize();
    ASSERT_EQ(engine.Create(m_returnsOne.Get(), c_Detour, m_first), EPatchStatus::Success);
    ASSERT_EQ(engine.Create(m_returnsTwo.Get(), c_Detour, m_second), EPatchStatus::Success);
    EXPECT_EQ(engine.EnableAll(), EPatchStatus::NotProtectable);
    EXPECT_EQ(m_returnsOne.Call(), 1);
    EXPECT_EQ(m_returnsTwo.Call(), 2);
    EXPECT_EQ(engine.EnableAll(), EPatchStatus::Success) << "tried again";
    EXPECT_EQ(m_returnsOne.Call(), c_Detoured);
    EXPECT_EQ(m_returnsTwo.Call(), c_Detoured);
    EXPECT_EQ(engine.ShutDown(), EPatchStatus::Success);
}

TEST_F(CPatchEngineProtection, ShutDownThatFailsMidwayIsRepeated)
{
    s_goodProtections = 4;
    ASSERT_EQ(m_engine.EnableAll(), EPatchStatus::Success);
    s_goodProtections = 2;
    EXPECT_EQ(m_engine.ShutDown(), EPatchStatus::NotProtectable);
    EXPECT_EQ(CodePages::Call(m_first), 1) << "the trampolines stand";
    EXPECT_EQ(CodePages::Call(m_second), 2);
    s_goodProtections = 4;
    EXPECT_EQ(m_engine.EnableAll(), EPatchStatus::Success);
    EXPECT_EQ(m_returnsOne.Call() + m_returnsTwo.Call(), 2 * c_Detoured);
    s_goodProtections = 4;
    EXPECT_EQ(m_engine.ShutDown(), EPatchStatus::Success);
    EXPECT_EQ(m_returnsOne.Call() + m_returnsTwo.Call(), 3);
}

TEST_F(CPatchEngineProtection, PagesGetBackTheProtectionOfThatMoment)
{
    s_goodProtections = 4;
    ASSERT_TRUE(LbOs::ProtectPages(m_returnsOne.Get(), 1, LbOs::c_ProtectionReadExecute));
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::Success);
    LbOs::SRegion region;
    ASSERT_TRUE(LbOs::QueryRegion(reinterpret_cast<std::uintptr_t>(m_returnsOne.Get()), region));
    EXPECT_EQ(region.protection, LbOs::c_ProtectionReadExecute);
}

TEST(CPatchEngineMemory, WithoutMemoryInReachThereIsNoPatch)
{
    CPatchEngine engine({.allocateNear = [](std::uintptr_t, std::size_t) noexcept -> void* { return nullptr; }});
    const CodePages code{0xB8, 1, 0, 0, 0, 0xC3};
    void* trampoline = nullptr;
    engine.Initialize();
    EXPECT_EQ(engine.Create(code.Get(), c_Detour, trampoline), EPatchStatus::NoMemory);
    EXPECT_EQ(engine.Enable(code.Get()), EPatchStatus::NotCreated);
    EXPECT_EQ(trampoline, nullptr);
    EXPECT_EQ(engine.ShutDown(), EPatchStatus::Success);
    EXPECT_EQ(static_cast<int>(EPatchStatus::NoMemory), 9);
}

TEST_F(CPatchEngineTest, DistantDetourIsReachedByARelay)
{
    expectMovable(m_returnsOne, 1);
}

TEST_F(CPatchEngineTest, NearDetourIsReachedDirectly)
{
    const CodePages code{0xB8, 1, 0, 0, 0, 0xC3, 0xCC, 0xCC, 0xB8, 2, 0, 0, 0, 0xC3};
    ASSERT_EQ(m_engine.Create(code.Get(), code.GetBytes() + 8, m_trampoline), EPatchStatus::Success);
    ASSERT_EQ(m_engine.Enable(code.Get()), EPatchStatus::Success);
    EXPECT_EQ(code.GetBytes()[0], 0xE9);
    EXPECT_EQ(code.GetBytes()[1], 3) << "detour - target - 5";
    EXPECT_EQ(code.Call(), 2);
}

TEST_F(CPatchEngineTest, EnableAllLeavesTheEnabledAlone)
{
    const CodePages other{0xB8, 2, 0, 0, 0, 0xC3};
    void* otherTrampoline = nullptr;
    ASSERT_EQ(patch(m_returnsOne.Get()), EPatchStatus::Success);
    ASSERT_EQ(m_engine.Create(other.Get(), c_Detour, otherTrampoline), EPatchStatus::Success);
    EXPECT_EQ(m_engine.EnableAll(), EPatchStatus::Success);
    EXPECT_EQ(m_returnsOne.Call() + other.Call(), 2 * c_Detoured);
    EXPECT_EQ(CodePages::Call(m_trampoline), 1);
    EXPECT_EQ(CodePages::Call(otherTrampoline), 2);
}

TEST_F(CPatchEngineTest, ShortJumpIsMoved)
{
    expectMovable(CodePages{0xEB, 3, 0xCC, 0xCC, 0xCC, 0xB8, 7, 0, 0, 0, 0xC3}, 7);
}

TEST_F(CPatchEngineTest, NearJumpIsMoved)
{
    expectMovable(CodePages{0xE9, 0, 0, 0, 0, 0xB8, 8, 0, 0, 0, 0xC3}, 8);
}

TEST_F(CPatchEngineTest, ShortConditionalJumpIsMoved)
{
    // xor eax, eax; jz taken; int3
    expectMovable(CodePages{0x31, 0xC0, 0x74, 1, 0xCC, 0xB8, 9, 0, 0, 0, 0xC3}, 9);
}

TEST_F(CPatchEngineTest, ShortConditionalJumpNotTakenIsMoved)
{
    // xor eax, eax; jnz to int3; jumps on
    expectMovable(CodePages{0x31, 0xC0, 0x75, 6, 0x90, 0xB8, 9, 0, 0, 0, 0xC3, 0xCC}, 9);
}

TEST_F(CPatchEngineTest, NearConditionalJumpInTheFirstNineBytesIsMoved)
{
    // As glibc's free begins: test; jz with a displacement of 32 bits.
    expectMovable(CodePages{0x31, 0xC0, 0x0F, 0x84, 5, 0, 0, 0, 0xCC, 0xCC, 0xCC, 0xCC, 0xCC, 0xB8, 10, 0, 0, 0, 0xC3},
                  10);
}

TEST_F(CPatchEngineTest, LoopIsMoved)
{
    // push 2; pop rcx; loop taken
    expectMovable(CodePages{0x6A, 2, 0x59, 0xE2, 6, 0xB8, 11, 0, 0, 0, 0xC3, 0xB8, 12, 0, 0, 0, 0xC3}, 12);
}

TEST_F(CPatchEngineTest, LoopNotTakenIsMoved)
{
    expectMovable(CodePages{0x6A, 1, 0x59, 0xE2, 6, 0xB8, 11, 0, 0, 0, 0xC3, 0xB8, 12, 0, 0, 0, 0xC3}, 11);
}

TEST_F(CPatchEngineTest, JumpOnZeroCounterIsMoved)
{
    // xor ecx, ecx; jrcxz taken; int3
    expectMovable(CodePages{0x31, 0xC9, 0xE3, 1, 0xCC, 0xB8, 13, 0, 0, 0, 0xC3}, 13);
}

TEST_F(CPatchEngineTest, JumpAmongTheReplacedInstructionsStaysAmongTheirCopies)
{
    // push 5; pop rcx; loop to itself
    expectMovable(CodePages{0x6A, 5, 0x59, 0xE2, 0xFE, 0xB8, 14, 0, 0, 0, 0xC3}, 14);
}

TEST_F(CPatchEngineTest, CallIsMovedAndReturnsToTheOriginal)
{
    // call over the function's end; inc eax; ret
    expectMovable(CodePages{0xE8, 6, 0, 0, 0, 0xFF, 0xC0, 0xC3, 0xCC, 0xCC, 0xCC, 0xB8, 16, 0, 0, 0, 0xC3}, 17);
}

TEST_F(CPatchEngineTest, RipRelativeOperandIsMoved)
{
    expectMovable(CodePages{0x8B, 0x05, 1, 0, 0, 0, 0xC3, 66, 0, 0, 0}, 66);
}

TEST_F(CPatchEngineTest, RipRelativeOperandWithImmediateIsMoved)
{
    // xor eax, eax; cmp dword [rip + 4], 77; sete al; ret
    expectMovable(CodePages{0x31, 0xC0, 0x83, 0x3D, 4, 0, 0, 0, 77, 0x0F, 0x94, 0xC0, 0xC3, 77, 0, 0, 0}, 1);
}

TEST_F(CPatchEngineTest, ShortFunctionIsPatchedTogetherWithItsPadding)
{
    expectMovable(CodePages{0x31, 0xC0, 0xC3, 0xCC, 0xCC}, 0);
}

TEST_F(CPatchEngineTest, ShortFunctionInFrontOfAnotherIsRefused)
{
    const CodePages code{0x31, 0xC0, 0xC3, 0xB8, 1, 0, 0, 0, 0xC3};
    EXPECT_EQ(patch(code.Get()), EPatchStatus::NotMovable);
    EXPECT_EQ(code.Call(), 0);
    EXPECT_EQ(static_cast<int>(EPatchStatus::NotMovable), 8);
}

TEST_F(CPatchEngineTest, JumpFromBehindIntoTheReplacedBytesIsRefused)
{
    const CodePages code{0x90, 0x90, 0x90, 0x90, 0x90, 0xB8, 1, 0, 0, 0, 0xEB, 0xF5};
    EXPECT_EQ(patch(code.Get()), EPatchStatus::NotMovable);
}

TEST_F(CPatchEngineTest, CallThatWouldReturnIntoThePatchIsRefused)
{
    const CodePages code{0xFF, 0xD0, 0x90, 0x90, 0x90, 0xC3};
    EXPECT_EQ(patch(code.Get()), EPatchStatus::NotMovable);
}

TEST_F(CPatchEngineTest, UnknownInstructionIsRefused)
{
    const CodePages code{0x90, 0x06, 0x90, 0x90, 0x90, 0xC3};
    EXPECT_EQ(patch(code.Get()), EPatchStatus::NotMovable);
}

namespace
{

/// True when a thread's next instruction lies in the range.
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

TEST_F(CPatchEngineTest, ThreadInsideTheReplacedBytesIsMovedThereAndBack)
{
    // nop; pause; jump back to pause: for ever, until the jump becomes two nops
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
    code.GetBytes()[4] = 0; // to the next instruction
    thread.join();
    EXPECT_EQ(result, 1);
}

TEST_F(CPatchEngineTest, ThreadsThatComeAndGoAreNoHindrance)
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

// Windows stops any thread.
TEST_F(CPatchEngineTest, ThreadThatCannotBeStoppedLeavesAllAsItWas)
{
    const bool canStop = LbOs::c_PathSeparator == L'\\';
    StuckThread thread;
    EXPECT_EQ(patch(m_returnsOne.Get()), canStop ? EPatchStatus::Success : EPatchStatus::NotProtectable);
    EXPECT_EQ(m_returnsOne.Call(), canStop ? c_Detoured : 1);
    EXPECT_EQ(m_engine.EnableAll(), canStop ? EPatchStatus::Success : EPatchStatus::NotProtectable);
    thread.LetGo();
    EXPECT_EQ(m_engine.EnableAll(), EPatchStatus::Success);
    EXPECT_EQ(m_returnsOne.Call(), c_Detoured);
}

TEST_F(CPatchEngineTest, ShutDownThatCannotStopAThreadKeepsAllAndIsRepeated)
{
    ASSERT_EQ(patch(m_returnsOne.Get()), EPatchStatus::Success);
    const bool canStop = LbOs::c_PathSeparator == L'\\';
    StuckThread thread;
    EXPECT_EQ(m_engine.ShutDown(), canStop ? EPatchStatus::Success : EPatchStatus::NotProtectable);
    EXPECT_EQ(m_returnsOne.Call(), canStop ? 1 : c_Detoured);
    EXPECT_EQ(CodePages::Call(m_trampoline), 1);
    thread.LetGo();
    EXPECT_EQ(m_engine.ShutDown(), canStop ? EPatchStatus::NotInitialized : EPatchStatus::Success);
    EXPECT_EQ(m_returnsOne.Call(), 1);
}

namespace
{

void* s_interrupted = nullptr;
int s_interruptedResult = 0;

} // namespace

TEST_F(CPatchEngineTest, ThreadGoesBackIntoATrampolineThatIsNoMore)
{
    if (!LbOs::c_CanHideInstructionPointers)
    {
        GTEST_SKIP() << "no handler hides where its thread goes back to";
    }
    // nop (four times); int3; mov eax, 5; ret
    const CodePages code{0x90, 0x90, 0x90, 0x90, 0xCC, 0xB8, 5, 0, 0, 0, 0xC3};
    ASSERT_EQ(patch(code.Get()), EPatchStatus::Success);
    s_interrupted = m_trampoline;
    StuckThread thread([] { s_interruptedResult = CodePages::Call(s_interrupted); }, false);
    EXPECT_EQ(m_engine.ShutDown(), EPatchStatus::Success);
    thread.LetGo();
    EXPECT_EQ(s_interruptedResult, 5);
}

TEST_F(CPatchEngineTest, SameFunctionGetsItsTrampolineBack)
{
    if (!LbOs::c_CanHideInstructionPointers)
    {
        GTEST_SKIP() << "trampolines are freed";
    }
    ASSERT_EQ(patch(m_returnsOne.Get()), EPatchStatus::Success);
    const void* const first = m_trampoline;
    ASSERT_EQ(m_engine.ShutDown(), EPatchStatus::Success);
    ASSERT_EQ(m_engine.Initialize(), EPatchStatus::Success);
    ASSERT_EQ(patch(m_returnsOne.Get()), EPatchStatus::Success);
    EXPECT_EQ(m_trampoline, first);
    EXPECT_EQ(m_returnsOne.Call(), c_Detoured);
    EXPECT_EQ(CodePages::Call(m_trampoline), 1);
}

TEST_F(CPatchEngineTest, OtherCodeAtTheSamePlaceGetsAnotherTrampoline)
{
    ASSERT_EQ(patch(m_returnsOne.Get()), EPatchStatus::Success);
    ASSERT_EQ(m_engine.ShutDown(), EPatchStatus::Success);
    m_returnsOne.GetBytes()[1] = 3;
    ASSERT_EQ(m_engine.Initialize(), EPatchStatus::Success);
    ASSERT_EQ(patch(m_returnsOne.Get()), EPatchStatus::Success);
    EXPECT_EQ(CodePages::Call(m_trampoline), 3);
}

#include "tests/lutestsuite/heap/patchenginetest.h"

using LuTestSuite::EPatchStatus;

namespace
{

/// Tests which instructions at the beginning of a function can be moved.
class CPatchEngineMoving : public CPatchEngineTest
{
};

} // namespace

TEST_F(CPatchEngineMoving, ShortJumpIsMoved)
{
    expectMovable(CodePages{0xEB, 3, 0xCC, 0xCC, 0xCC, 0xB8, 7, 0, 0, 0, 0xC3}, 7);
}

TEST_F(CPatchEngineMoving, NearJumpIsMoved)
{
    expectMovable(CodePages{0xE9, 0, 0, 0, 0, 0xB8, 8, 0, 0, 0, 0xC3}, 8);
}

TEST_F(CPatchEngineMoving, ShortConditionalJumpIsMoved)
{
    // xor eax, eax; jz taken; int3
    expectMovable(CodePages{0x31, 0xC0, 0x74, 1, 0xCC, 0xB8, 9, 0, 0, 0, 0xC3}, 9);
}

TEST_F(CPatchEngineMoving, UntakenShortConditionalJumpIsMoved)
{
    // xor eax, eax; jnz to int3; jumps on
    expectMovable(CodePages{0x31, 0xC0, 0x75, 6, 0x90, 0xB8, 9, 0, 0, 0, 0xC3, 0xCC}, 9);
}

TEST_F(CPatchEngineMoving, NearConditionalJumpInTheFirstNineBytesIsMoved)
{
    // The start of glibc's free: test; jz with a 32-bit displacement.
    expectMovable(CodePages{0x31, 0xC0, 0x0F, 0x84, 5, 0, 0, 0, 0xCC, 0xCC, 0xCC, 0xCC, 0xCC, 0xB8, 10, 0, 0, 0, 0xC3},
                  10);
}

TEST_F(CPatchEngineMoving, PushesAndAStackAdjustmentAreMoved)
{
    // The start of malloc in Wine's C library: push rsi; push rbx; sub rsp, 28h; later the reverse.
    expectMovable(
        CodePages{0x56, 0x53, 0x48, 0x83, 0xEC, 0x28, 0xB8, 20, 0, 0, 0, 0x48, 0x83, 0xC4, 0x28, 0x5B, 0x5E, 0xC3}, 20);
}

TEST_F(CPatchEngineMoving, PartlyPatchedLongInstructionIsMoved)
{
    // The start of free and realloc in Wine's C library: lea rsp, [rsp + 0] with eight bytes.
    expectMovable(CodePages{0x48, 0x8D, 0xA4, 0x24, 0, 0, 0, 0, 0xB8, 21, 0, 0, 0, 0xC3}, 21);
}

TEST_F(CPatchEngineMoving, CallAfterAStackAdjustmentIsMoved)
{
    // The start of functions in the Windows C library: sub rsp, 28h; call. The target of the call is behind add rsp,
    // 28h and ret.
    expectMovable(
        CodePages{0x48, 0x83, 0xEC, 0x28, 0xE8, 5, 0, 0, 0, 0x48, 0x83, 0xC4, 0x28, 0xC3, 0xB8, 22, 0, 0, 0, 0xC3}, 22);
}

TEST_F(CPatchEngineMoving, HeapFunctionsCanBePatched)
{
    const LbOs::SHeapFunctions functions = LbOs::GetHeapFunctions();
    for (void* const target : {functions.malloc, functions.free, functions.realloc})
    {
        void* trampoline = nullptr;
        EXPECT_EQ(m_engine.Create(target, c_Detour, trampoline), EPatchStatus::Success) << target;
    }
    EXPECT_EQ(m_engine.ShutDown(), EPatchStatus::Success);
}

TEST_F(CPatchEngineMoving, LoopIsMoved)
{
    // push 2; pop rcx; loop taken
    expectMovable(CodePages{0x6A, 2, 0x59, 0xE2, 6, 0xB8, 11, 0, 0, 0, 0xC3, 0xB8, 12, 0, 0, 0, 0xC3}, 12);
}

TEST_F(CPatchEngineMoving, UntakenLoopIsMoved)
{
    expectMovable(CodePages{0x6A, 1, 0x59, 0xE2, 6, 0xB8, 11, 0, 0, 0, 0xC3, 0xB8, 12, 0, 0, 0, 0xC3}, 11);
}

TEST_F(CPatchEngineMoving, JumpOnZeroCounterIsMoved)
{
    // xor ecx, ecx; jrcxz taken; int3
    expectMovable(CodePages{0x31, 0xC9, 0xE3, 1, 0xCC, 0xB8, 13, 0, 0, 0, 0xC3}, 13);
}

TEST_F(CPatchEngineMoving, JumpAmongTheReplacedInstructionsStaysAmongTheirCopies)
{
    // push 5; pop rcx; loop to itself
    expectMovable(CodePages{0x6A, 5, 0x59, 0xE2, 0xFE, 0xB8, 14, 0, 0, 0, 0xC3}, 14);
}

TEST_F(CPatchEngineMoving, CallIsMovedAndReturnsToTheOriginal)
{
    // call of code behind the function; inc eax; ret
    expectMovable(CodePages{0xE8, 6, 0, 0, 0, 0xFF, 0xC0, 0xC3, 0xCC, 0xCC, 0xCC, 0xB8, 16, 0, 0, 0, 0xC3}, 17);
}

TEST_F(CPatchEngineMoving, RipRelativeOperandIsMoved)
{
    expectMovable(CodePages{0x8B, 0x05, 1, 0, 0, 0, 0xC3, 66, 0, 0, 0}, 66);
}

TEST_F(CPatchEngineMoving, RipRelativeOperandWithImmediateIsMoved)
{
    // xor eax, eax; cmp dword [rip + 4], 77; sete al; ret
    expectMovable(CodePages{0x31, 0xC0, 0x83, 0x3D, 4, 0, 0, 0, 77, 0x0F, 0x94, 0xC0, 0xC3, 77, 0, 0, 0}, 1);
}

TEST_F(CPatchEngineMoving, ShortFunctionIsPatchedTogetherWithItsPadding)
{
    expectMovable(CodePages{0x31, 0xC0, 0xC3, 0xCC, 0xCC}, 0);
}

TEST_F(CPatchEngineMoving, ShortFunctionInFrontOfAnotherIsRefused)
{
    const CodePages code{0x31, 0xC0, 0xC3, 0xB8, 1, 0, 0, 0, 0xC3};
    EXPECT_EQ(patch(code.Get()), EPatchStatus::NotMovable);
    EXPECT_EQ(code.Call(), 0);
    EXPECT_EQ(static_cast<int>(EPatchStatus::NotMovable), 8);
}

TEST_F(CPatchEngineMoving, JumpBackIntoTheReplacedBytesIsRefused)
{
    const CodePages code{0x90, 0x90, 0x90, 0x90, 0x90, 0xB8, 1, 0, 0, 0, 0xEB, 0xF5};
    EXPECT_EQ(patch(code.Get()), EPatchStatus::NotMovable);
}

TEST_F(CPatchEngineMoving, CallThatWouldReturnIntoThePatchIsRefused)
{
    const CodePages code{0xFF, 0xD0, 0x90, 0x90, 0x90, 0xC3};
    EXPECT_EQ(patch(code.Get()), EPatchStatus::NotMovable);
}

TEST_F(CPatchEngineMoving, UnknownInstructionIsRefused)
{
    const CodePages code{0x90, 0x06, 0x90, 0x90, 0x90, 0xC3};
    EXPECT_EQ(patch(code.Get()), EPatchStatus::NotMovable);
}

// Tests where a thread continues if it was stopped at an overwritten instruction or at the copy of one.

#include "testing/lutestsuite/heap/trampoline.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace
{

using LuTestSuite::BuildTrampoline;
using LuTestSuite::STrampoline;

constexpr std::uintptr_t c_Target = 0x7F0000001000;
constexpr std::uintptr_t c_Block = 0x7F0000100000;
constexpr std::uintptr_t c_DetourAddress = 0x7F0000002000;

/// The beginning of a function, and the offsets of the instructions that a patch overwrites.
struct SPrologueCase
{
    const char* name;
    std::vector<std::uint8_t> code;
    std::vector<std::size_t> starts;
    std::size_t size; ///< of these instructions, in bytes
};

class Trampoline : public testing::TestWithParam<SPrologueCase>
{
protected:
    Trampoline() : m_trampoline(BuildTrampoline(GetParam().code, c_Target, c_Block, c_DetourAddress)) {}

    void SetUp() override { ASSERT_TRUE(m_trampoline); }

    std::size_t GetCopy(std::size_t original) const
    {
        const auto copy = m_trampoline->FindCopy(c_Block, original);
        EXPECT_TRUE(copy) << original;
        return copy.value_or(c_Block) - c_Block;
    }

    const std::optional<STrampoline> m_trampoline;
};

} // namespace

TEST_P(Trampoline, FindsACopyForThreadsAtEachOverwrittenInstruction)
{
    std::size_t last = STrampoline::sc_uiEntry;
    for (const std::size_t start : GetParam().starts)
    {
        const std::size_t copy = GetCopy(start);
        EXPECT_GE(copy, last);
        last = copy + 1;
    }
    EXPECT_EQ(GetCopy(0), STrampoline::sc_uiEntry);
}

TEST_P(Trampoline, SendsThreadsAtEachCopyBackToTheOriginal)
{
    for (const std::size_t start : GetParam().starts)
    {
        EXPECT_EQ(m_trampoline->FindResume(GetCopy(start)), c_Target + start) << start;
    }
}

TEST_P(Trampoline, FindsNoCopyForThreadsWithinAnInstruction)
{
    for (std::size_t offset = 0; offset < GetParam().size; ++offset)
    {
        const auto& starts = GetParam().starts;
        const bool isStart = std::find(starts.begin(), starts.end(), offset) != starts.end();
        EXPECT_EQ(m_trampoline->FindCopy(c_Block, offset).has_value(), isStart) << offset;
    }
    EXPECT_FALSE(m_trampoline->FindCopy(c_Block, GetParam().size));
}

TEST_P(Trampoline, SendsThreadsFromTheRelayToTheDetourAndFromTheEndBehindThePatch)
{
    EXPECT_EQ(m_trampoline->FindResume(STrampoline::sc_uiRelay), c_DetourAddress);
    const STrampoline::SPlace& end = m_trampoline->places[m_trampoline->placeCount - 1];
    EXPECT_EQ(end.resume, c_Target + GetParam().size);
    EXPECT_FALSE(m_trampoline->FindResume(end.offset + 1U));
}

INSTANTIATE_TEST_SUITE_P(Prologues, Trampoline,
                         testing::Values(
                             // push rsi; push rbx; sub rsp, 28h
                             SPrologueCase{"Plain", {0x56, 0x53, 0x48, 0x83, 0xEC, 0x28, 0xC3}, {0, 1, 2}, 6},
                             // mov eax, [rip + 1]
                             SPrologueCase{"RipRelative", {0x8B, 0x05, 1, 0, 0, 0, 0xC3}, {0}, 6},
                             // xor eax, eax; jz +1
                             SPrologueCase{"ShortBranch", {0x31, 0xC0, 0x74, 1, 0xCC, 0xC3}, {0, 2, 4}, 5},
                             // test edi, edi; jz with a displacement of 32 bits
                             SPrologueCase{"NearBranch", {0x85, 0xFF, 0x0F, 0x84, 5, 0, 0, 0, 0xC3}, {0, 2}, 8},
                             // push 2; loop to a later place
                             SPrologueCase{"Loop", {0x6A, 2, 0xE2, 6, 0x90, 0xC3}, {0, 2, 4}, 5},
                             // sub rsp, 28h; call
                             SPrologueCase{"Call", {0x48, 0x83, 0xEC, 0x28, 0xE8, 5, 0, 0, 0, 0xC3}, {0, 4}, 9}),
                         [](const testing::TestParamInfo<SPrologueCase>& each) {
                             return std::string(each.param.name);
                         });

TEST(TrampolineBranch, SendsThreadsAtItsLongJumpsToBothDestinations)
{
    // xor eax, eax; jz +1; int3
    const std::vector<std::uint8_t> code{0x31, 0xC0, 0x74, 1, 0xCC, 0xC3};

    const auto trampoline = BuildTrampoline(code, c_Target, c_Block, c_DetourAddress);

    ASSERT_TRUE(trampoline);
    const std::size_t branch = *trampoline->FindCopy(c_Block, 2) - c_Block;
    // A thread behind the copied branch has not taken it. A thread behind the short jump that follows has taken it.
    EXPECT_EQ(trampoline->FindResume(branch + 2), c_Target + 4);
    EXPECT_EQ(trampoline->FindResume(branch + 4), c_Target + 5);
}

TEST(TrampolineJump, SendsThreadsAtTheJumpToItsDestination)
{
    // jmp, which the patch overwrites as a whole
    const std::vector<std::uint8_t> code{0xE9, 0, 1, 0, 0};

    const auto trampoline = BuildTrampoline(code, c_Target, c_Block, c_DetourAddress);

    ASSERT_TRUE(trampoline);
    EXPECT_EQ(trampoline->FindCopy(c_Block, 0), c_Block + STrampoline::sc_uiEntry);
    EXPECT_EQ(trampoline->FindResume(STrampoline::sc_uiEntry), c_Target + 0x105);
}

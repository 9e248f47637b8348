#include "testing/lutestsuite/heap/instruction.h"

#include <random>
#include <vector>

#include <gtest/gtest.h>

using LuTestSuite::DecodeInstruction;
using LuTestSuite::ERelative;

namespace
{

using Bytes = std::vector<std::uint8_t>;

/// Returns the length of the first instruction; 0 if it is refused. Pads the code with one-byte instructions, so that
/// it is never too short.
int lengthOf(Bytes code)
{
    code.resize(code.size() + LuTestSuite::c_InstructionMax, 0x90);
    const auto instruction = DecodeInstruction(code);
    return instruction ? instruction->length : 0;
}

ERelative relativeOf(const Bytes& code)
{
    const auto instruction = DecodeInstruction(code);
    return instruction ? instruction->relative : ERelative::None;
}

} // namespace

TEST(Instruction, OneByteOpcodesIncludeTheirOperands)
{
    EXPECT_EQ(lengthOf({0x90}), 1);                         // nop
    EXPECT_EQ(lengthOf({0xC2, 0x08, 0x00}), 3);             // ret 8
    EXPECT_EQ(lengthOf({0xC8, 0x10, 0x00, 0x00}), 4);       // enter 16, 0
    EXPECT_EQ(lengthOf({0x6A, 0x01}), 2);                   // push 1
    EXPECT_EQ(lengthOf({0x68, 1, 2, 3, 4}), 5);             // push imm32
    EXPECT_EQ(lengthOf({0x69, 0xC0, 1, 2, 3, 4}), 6);       // imul eax, eax, imm32
    EXPECT_EQ(lengthOf({0xA1, 1, 2, 3, 4, 5, 6, 7, 8}), 9); // mov eax, moffs64
}

TEST(Instruction, PrefixesChangeSizesOfOperands)
{
    EXPECT_EQ(lengthOf({0x66, 0x68, 1, 2}), 4);                    // push imm16
    EXPECT_EQ(lengthOf({0xB8, 1, 2, 3, 4}), 5);                    // mov eax, imm32
    EXPECT_EQ(lengthOf({0x66, 0xB8, 1, 2}), 4);                    // mov ax, imm16
    EXPECT_EQ(lengthOf({0x48, 0xB8, 1, 2, 3, 4, 5, 6, 7, 8}), 10); // mov rax, imm64
    EXPECT_EQ(lengthOf({0x66, 0x48, 0x81, 0xC0, 1, 2, 3, 4}), 8);  // add rax, imm32
    EXPECT_EQ(lengthOf({0x67, 0xA1, 1, 2, 3, 4}), 6);              // mov eax, moffs32
    EXPECT_EQ(lengthOf({0x48, 0x66, 0xB8, 1, 2}), 5);              // REX in the wrong place does not count
}

TEST(Instruction, ModRMDeterminesTheDisplacement)
{
    EXPECT_EQ(lengthOf({0x8B, 0xC1}), 2);                   // mov eax, ecx
    EXPECT_EQ(lengthOf({0x8B, 0x01}), 2);                   // mov eax, [rcx]
    EXPECT_EQ(lengthOf({0x8B, 0x41, 1}), 3);                // mov eax, [rcx+1]
    EXPECT_EQ(lengthOf({0x8B, 0x81, 1, 2, 3, 4}), 6);       // mov eax, [rcx+disp32]
    EXPECT_EQ(lengthOf({0x8B, 0x04, 0x24}), 3);             // mov eax, [rsp]
    EXPECT_EQ(lengthOf({0x8B, 0x04, 0x25, 1, 2, 3, 4}), 7); // mov eax, [disp32]
    EXPECT_EQ(lengthOf({0x8B, 0x44, 0x24, 1}), 4);          // mov eax, [rsp+1]
    EXPECT_EQ(lengthOf({0x8B, 0x05, 1, 2, 3, 4}), 6);       // mov eax, [rip+disp32]
    EXPECT_EQ(lengthOf({0x0F, 0x20, 0x05}), 3);             // mov rbp, cr0: never memory
}

TEST(Instruction, RipRelativeOperandsAreRecognised)
{
    const auto instruction = DecodeInstruction(Bytes{0x48, 0x8B, 0x05, 0x10, 0x00, 0x00, 0x00});
    ASSERT_TRUE(instruction);
    EXPECT_TRUE(instruction->isRipRelative);
    EXPECT_EQ(instruction->displacementOffset, 3);
    EXPECT_EQ(instruction->displacementSize, 4);
    EXPECT_FALSE(DecodeInstruction(Bytes{0x8B, 0x04, 0x25, 1, 2, 3, 4})->isRipRelative);
}

TEST(Instruction, TestInstructionHasAnImmediateUnlikeNotAndNeg)
{
    EXPECT_EQ(lengthOf({0xF6, 0xC0, 1}), 3);          // test al, 1
    EXPECT_EQ(lengthOf({0xF6, 0xD0}), 2);             // not al
    EXPECT_EQ(lengthOf({0xF7, 0xC0, 1, 2, 3, 4}), 6); // test eax, imm32
    EXPECT_EQ(lengthOf({0xF7, 0xD8}), 2);             // neg eax
}

TEST(Instruction, VectorPrefixesSelectTheirOpcodeMaps)
{
    EXPECT_EQ(lengthOf({0xC5, 0xF8, 0x77}), 3);                         // vzeroupper
    EXPECT_EQ(lengthOf({0xC5, 0xF9, 0x70, 0xC0, 1}), 5);                // vpshufd xmm0, xmm0, 1
    EXPECT_EQ(lengthOf({0xC4, 0xE2, 0x79, 0x18, 0x05, 1, 2, 3, 4}), 9); // vbroadcastss xmm0, [rip+disp32]
    EXPECT_EQ(lengthOf({0xC4, 0xE3, 0x79, 0x0F, 0xC1, 1}), 6);          // vpalignr
    EXPECT_EQ(lengthOf({0x62, 0xF1, 0x7C, 0x48, 0x10, 0x00}), 6);       // vmovups zmm0, [rax]
    EXPECT_EQ(lengthOf({0x62, 0xF1, 0x7C, 0x48, 0x10, 0x40, 1}), 7);    // vmovups zmm0, [rax+64]
    EXPECT_EQ(lengthOf({0x62, 0xF3, 0x7D, 0x48, 0x3F, 0xC2, 1}), 7);    // vpcmpb
    EXPECT_EQ(lengthOf({0x62, 0xF5, 0x7C, 0x48, 0x58, 0xC1}), 6);       // vaddph zmm0, zmm0, zmm1
    EXPECT_EQ(lengthOf({0x8F, 0xE8, 0x78, 0xC0, 0xC1, 1}), 6);          // vprotb xmm0, xmm1, 1
    EXPECT_EQ(lengthOf({0x8F, 0xC0}), 2);                               // pop rax
    EXPECT_EQ(lengthOf({0x66, 0xC5, 0xF8, 0x77}), 0) << "a prefix before VEX is invalid";
}

TEST(Instruction, RelativeBranchesAreRecognised)
{
    EXPECT_EQ(relativeOf({0xEB, 0x00}), ERelative::Jump);
    EXPECT_EQ(relativeOf({0xE9, 0, 0, 0, 0}), ERelative::Jump);
    EXPECT_EQ(relativeOf({0xE8, 0, 0, 0, 0}), ERelative::Call);
    EXPECT_EQ(relativeOf({0x74, 0x00}), ERelative::Conditional);
    EXPECT_EQ(relativeOf({0x0F, 0x84, 0, 0, 0, 0}), ERelative::Conditional);
    EXPECT_EQ(relativeOf({0xE2, 0x00}), ERelative::Loop);
    EXPECT_EQ(relativeOf({0xE3, 0x00}), ERelative::Loop);
    EXPECT_EQ(relativeOf({0xC7, 0xF8, 0, 0, 0, 0}), ERelative::Transaction);
    EXPECT_EQ(relativeOf({0xFF, 0xE0}), ERelative::None);
}

TEST(Instruction, DestinationsAreRelativeToTheEndOfTheInstruction)
{
    const Bytes backward = {0xEB, 0xFE};
    EXPECT_EQ(LuTestSuite::GetRelativeDestination(*DecodeInstruction(backward), backward.data(), 0x1000), 0x1000U);
    const Bytes forward = {0x0F, 0x84, 0x10, 0x00, 0x00, 0x00};
    EXPECT_EQ(LuTestSuite::GetRelativeDestination(*DecodeInstruction(forward), forward.data(), 0x1000), 0x1016U);
    const Bytes operand = {0x48, 0x8B, 0x05, 0xF9, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(LuTestSuite::GetRelativeDestination(*DecodeInstruction(operand), operand.data(), 0x1000), 0x1000U);
}

TEST(Instruction, CodesInvalidIn64BitModeAreRefused)
{
    for (const std::uint8_t code : Bytes{0x06, 0x27, 0x60, 0x82, 0x9A, 0xCE, 0xD4, 0xEA})
    {
        EXPECT_EQ(lengthOf({code}), 0) << static_cast<int>(code);
    }
}

TEST(Instruction, InstructionsOverFifteenBytesAreRefused)
{
    Bytes code(14, 0x66);
    code.push_back(0x90);
    EXPECT_EQ(lengthOf(code), 15);
    code.insert(code.begin(), 0x66);
    EXPECT_EQ(lengthOf(code), 0);
}

TEST(Instruction, TruncatedInstructionsAreRefused)
{
    const Bytes code = {0x48, 0x81, 0x84, 0x24, 1, 2, 3, 4, 5, 6, 7, 8}; // add qword [rsp+disp32], imm32
    ASSERT_EQ(lengthOf(code), 12);
    for (std::size_t size = 0; size < code.size(); ++size)
    {
        // On the heap, where a sanitizer detects reads beyond the end.
        const Bytes cut(code.begin(), code.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(DecodeInstruction(cut)) << size;
    }
}

TEST(Instruction, DecodedLengthNeverExceedsTheGivenBytes)
{
    std::mt19937 random(12345);
    for (int round = 0; round < 200'000; ++round)
    {
        Bytes code(random() % 20U);
        for (std::uint8_t& byte : code)
        {
            byte = static_cast<std::uint8_t>(random());
        }
        if (const auto instruction = DecodeInstruction(code))
        {
            ASSERT_LE(instruction->length, std::min(code.size(), LuTestSuite::c_InstructionMax));
            ASSERT_LE(instruction->displacementOffset + instruction->displacementSize, instruction->length);
            ASSERT_EQ(instruction->immediateOffset + instruction->immediateSize, instruction->length);
        }
    }
}

/// Lengths of x86-64 instructions, and which of their bytes depend on their address.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace LuTestSuite
{

/// The processor refuses longer instructions.
inline constexpr std::size_t c_InstructionMax = 15;

/// Tables of operation codes, by the bytes in front of the code.
enum class EOpcodeMap : std::uint8_t
{
    OneByte, ///< no byte
    Map0F,   ///< 0F
    Map0F38, ///< 0F 38
    Map0F3A, ///< 0F 3A
    Extended ///< a VEX, EVEX or XOP prefix
};

enum class ERelative : std::uint8_t
{
    None,
    Jump,        ///< JMP
    Conditional, ///< Jcc
    Loop,        ///< LOOP, LOOPE, LOOPNE, JRCXZ: 8-bit displacement only
    Call,
    Transaction, ///< XBEGIN: the processor may take this branch later, on an abort
};

struct SInstruction
{
    std::uint8_t length = 0;
    std::uint8_t opcodeOffset = 0; ///< of the last byte of the operation code
    EOpcodeMap map = EOpcodeMap::OneByte;
    std::uint8_t opcode = 0;
    bool hasModRM = false;
    std::uint8_t modRM = 0;
    bool isRipRelative = false; ///< the displacement counts from the instruction's end
    std::uint8_t displacementOffset = 0;
    std::uint8_t displacementSize = 0;
    std::uint8_t immediateOffset = 0; ///< in a relative branch, the immediate is the displacement
    std::uint8_t immediateSize = 0;
    ERelative relative = ERelative::None;
};

/// Decodes the instruction at the beginning of `code` in 64-bit mode. Empty if the bytes are not a known instruction
/// (all but 3DNow! are known) or end too early. Reads at most c_InstructionMax bytes.
std::optional<SInstruction> DecodeInstruction(std::span<const std::uint8_t> code) noexcept;

/// The destination of an instruction at `address` that has a relative branch or a RIP-relative operand. The instruction
/// must have one of the two.
std::uintptr_t GetRelativeDestination(const SInstruction& instruction, const std::uint8_t* code,
                                      std::uintptr_t address) noexcept;

} // namespace LuTestSuite

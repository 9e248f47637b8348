#include "testing/lutestsuite/heap/trampoline.h"

#include <algorithm>
#include <cstring>

namespace LuTestSuite
{

namespace
{

constexpr std::uint8_t c_JumpShort = 0xEB;
constexpr std::uint8_t c_Interrupt3 = 0xCC;
constexpr std::uint8_t c_Nop = 0x90;

/// The instructions that a patch overwrites completely or partly.
struct SPrologue
{
    std::array<SInstruction, c_PatchSize> instructions;
    std::array<std::uint8_t, c_PatchSize> offsets;
    std::size_t count = 0;
    std::size_t size = 0; ///< bytes of all instructions

    bool IsStart(std::size_t offset) const noexcept
    {
        return std::find(offsets.begin(), offsets.begin() + count, offset) != offsets.begin() + count;
    }
};

/// True if execution never continues after the instruction.
bool endsPath(const SInstruction& instruction) noexcept
{
    if (instruction.map != EOpcodeMap::OneByte)
    {
        return false;
    }
    const unsigned field = (instruction.modRM >> 3U) & 7U;
    return instruction.relative == ERelative::Jump || (instruction.opcode & 0xFEU) == 0xC2 ||
           instruction.opcode == c_Interrupt3 || (instruction.opcode == 0xFF && (field == 4 || field == 5));
}

bool isCall(const SInstruction& instruction) noexcept
{
    const unsigned field = (instruction.modRM >> 3U) & 7U;
    return instruction.relative == ERelative::Call ||
           (instruction.map == EOpcodeMap::OneByte && instruction.opcode == 0xFF && (field == 2 || field == 3));
}

bool isPadding(std::span<const std::uint8_t> bytes) noexcept
{
    return std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == c_Interrupt3 || byte == c_Nop; });
}

std::optional<SPrologue> readPrologue(std::span<const std::uint8_t> code) noexcept
{
    SPrologue prologue;
    while (prologue.size < c_PatchSize)
    {
        const std::optional<SInstruction> instruction = DecodeInstruction(code.subspan(prologue.size));
        if (!instruction || instruction->relative == ERelative::Transaction)
        {
            return std::nullopt;
        }
        prologue.instructions[prologue.count] = *instruction;
        prologue.offsets[prologue.count] = static_cast<std::uint8_t>(prologue.size);
        ++prologue.count;
        prologue.size += instruction->length;
        if (prologue.size >= c_PatchSize)
        {
            break;
        }
        // The patch may overwrite a short function together with the padding after it. It may not overwrite a call and
        // bytes after it, because the call would return into the patch.
        const std::size_t rest = c_PatchSize - prologue.size;
        if (isCall(*instruction) ||
            (endsPath(*instruction) && (code.size() < c_PatchSize || !isPadding(code.subspan(prologue.size, rest)))))
        {
            return std::nullopt;
        }
    }
    return prologue;
}

/// Searches the code after the prologue for jumps into the overwritten bytes. Misses jumps through tables and jumps
/// from distant code.
bool isEnteredFromBehind(std::span<const std::uint8_t> code, std::uintptr_t target, std::size_t first) noexcept
{
    for (std::size_t offset = first; offset < code.size();)
    {
        const std::optional<SInstruction> instruction = DecodeInstruction(code.subspan(offset));
        if (!instruction)
        {
            // The bytes are data, or the readable bytes end here.
            return false;
        }
        if (instruction->relative != ERelative::None)
        {
            const std::uintptr_t destination =
                GetRelativeDestination(*instruction, code.data() + offset, target + offset);
            if (destination > target && destination < target + c_PatchSize)
            {
                return true;
            }
        }
        offset += instruction->length;
    }
    return false;
}

class CBuilder
{
public:
    CBuilder(std::span<const std::uint8_t> code, const SPrologue& prologue, std::uintptr_t target,
             std::uintptr_t block) noexcept
        : m_source(code), m_prologue(prologue), m_target(target), m_block(block)
    {
        m_trampoline.code.fill(c_Interrupt3);
    }

    std::optional<STrampoline> Run(std::uintptr_t detour) noexcept
    {
        m_position = STrampoline::sc_uiRelay;
        emitJump(detour);
        m_position = STrampoline::sc_uiEntry;
        for (std::size_t index = 0; index < m_prologue.count; ++index)
        {
            copy(m_prologue.instructions[index], m_prologue.offsets[index]);
        }
        emitJump(m_target + m_prologue.size);
        fixInnerJumps();
        return m_isGood ? std::optional(m_trampoline) : std::nullopt;
    }

private:
    static constexpr std::size_t sc_uiPointerSize = 8;

    /// A literal that must become the address of an instruction's copy. The copy may not have been emitted yet.
    struct SInnerJump
    {
        std::size_t literal;
        std::size_t original;
    };

    void emit(std::initializer_list<std::uint8_t> bytes) noexcept
    {
        std::ranges::copy(bytes, m_trampoline.code.begin() + static_cast<std::ptrdiff_t>(m_position));
        m_position += bytes.size();
    }

    /// Records that a thread at the next emitted instruction may continue at `resume` instead.
    void mark(std::uintptr_t resume) noexcept
    {
        m_trampoline.places[m_trampoline.placeCount++] = {static_cast<std::uint8_t>(m_position), resume};
    }

    /// Stores an address in the table at the block's end, and emits the distance to it as a displacement.
    void emitLiteral(std::uintptr_t value) noexcept
    {
        m_literals -= sc_uiPointerSize;
        std::memcpy(&m_trampoline.code[m_literals], &value, sizeof(value));
        const auto distance = static_cast<std::int32_t>(m_literals - (m_position + sizeof(std::int32_t)));
        std::memcpy(&m_trampoline.code[m_position], &distance, sizeof(distance));
        m_position += sizeof(distance);
    }

    /// Emits a jump that reaches any address.
    void emitJump(std::uintptr_t destination) noexcept
    {
        mark(destination);
        emit({0xFF, 0x25});
        emitLiteral(destination);
        noteInner(destination);
    }

    void noteInner(std::uintptr_t destination) noexcept
    {
        const std::uintptr_t offset = destination - m_target;
        if (offset >= m_prologue.size || m_position <= STrampoline::sc_uiEntry)
        {
            return;
        }
        m_isGood = m_isGood && m_prologue.IsStart(offset);
        m_innerJumps[m_innerCount++] = {m_literals, offset};
    }

    /// If a jump leads to an overwritten instruction, lets it lead to the copy of that instruction instead.
    void fixInnerJumps() noexcept
    {
        for (std::size_t index = 0; m_isGood && index < m_innerCount; ++index)
        {
            const std::uintptr_t destination = *m_trampoline.FindCopy(m_block, m_innerJumps[index].original);
            std::memcpy(&m_trampoline.code[m_innerJumps[index].literal], &destination, sizeof(destination));
        }
    }

    void copy(const SInstruction& instruction, std::uint8_t offset) noexcept
    {
        m_trampoline.copies[m_trampoline.copyCount++] = {offset, static_cast<std::uint8_t>(m_position)};
        const std::uint8_t* const source = m_source.data() + offset;
        const std::uintptr_t address = m_target + offset;
        switch (instruction.relative)
        {
        case ERelative::Jump:
            emitJump(GetRelativeDestination(instruction, source, address));
            break;
        case ERelative::Call:
            copyCall(address, GetRelativeDestination(instruction, source, address), address + instruction.length);
            break;
        case ERelative::Conditional:
        case ERelative::Loop:
            copyBranch(instruction, source, address);
            break;
        default:
            copyPlain(instruction, source, address);
            break;
        }
    }

    /// Pushes the return address of the original call, so that the callee returns to the function and not to the block.
    void copyCall(std::uintptr_t address, std::uintptr_t destination, std::uintptr_t returnAddress) noexcept
    {
        mark(address);
        emit({0xFF, 0x35}); // PUSH
        emitLiteral(returnAddress);
        emitJump(destination);
    }

    /// Emits the short form of the branch, a short jump over a long jump, and the long jump. This also serves branches
    /// that have only a short form.
    void copyBranch(const SInstruction& instruction, const std::uint8_t* source, std::uintptr_t address) noexcept
    {
        constexpr std::uint8_t c_ShortJumpSize = 2;
        constexpr std::uint8_t c_LongJumpSize = 6;
        mark(address);
        const bool isNear = instruction.map == EOpcodeMap::Map0F;
        const std::size_t prefixes = instruction.opcodeOffset - (isNear ? 1U : 0U);
        for (std::size_t index = 0; index < prefixes; ++index)
        {
            emit({source[index]});
        }
        // 0F 8x is the near form of 7x.
        emit({static_cast<std::uint8_t>(isNear ? instruction.opcode - 0x10 : instruction.opcode), c_ShortJumpSize});
        mark(address + instruction.length);
        emit({c_JumpShort, c_LongJumpSize});
        emitJump(GetRelativeDestination(instruction, source, address));
    }

    void copyPlain(const SInstruction& instruction, const std::uint8_t* source, std::uintptr_t address) noexcept
    {
        mark(address);
        std::uint8_t* const destination = &m_trampoline.code[m_position];
        std::memcpy(destination, source, instruction.length);
        m_position += instruction.length;
        if (isCall(instruction))
        {
            // An indirect call at the end of the prologue cannot be moved: it would push the copy's return address.
            m_isGood = false;
        }
        if (instruction.isRipRelative)
        {
            const std::uintptr_t operand = GetRelativeDestination(instruction, source, address);
            const auto distance = static_cast<std::int64_t>(operand - (m_block + m_position));
            const auto narrow = static_cast<std::int32_t>(distance);
            m_isGood = m_isGood && narrow == distance;
            std::memcpy(destination + instruction.displacementOffset, &narrow, sizeof(narrow));
        }
    }

    std::span<const std::uint8_t> m_source;
    const SPrologue& m_prologue;
    const std::uintptr_t m_target;
    const std::uintptr_t m_block;
    STrampoline m_trampoline;
    std::size_t m_position = 0;
    std::size_t m_literals = STrampoline::sc_uiCapacity;
    std::array<SInnerJump, c_PatchSize + 1> m_innerJumps = {};
    std::size_t m_innerCount = 0;
    bool m_isGood = true;
};

} // namespace

std::optional<std::uintptr_t> STrampoline::FindCopy(std::uintptr_t block, std::size_t offset) const noexcept
{
    const auto* const end = copies.begin() + copyCount;
    const auto* const found =
        std::find_if(copies.begin(), end, [offset](const SCopy& copy) { return copy.original == offset; });
    return found == end ? std::nullopt : std::optional(block + found->copy);
}

std::optional<std::uintptr_t> STrampoline::FindResume(std::size_t offset) const noexcept
{
    const auto* const end = places.begin() + placeCount;
    const auto* const found =
        std::find_if(places.begin(), end, [offset](const SPlace& place) { return place.offset == offset; });
    return found == end ? std::nullopt : std::optional(found->resume);
}

std::optional<STrampoline> BuildTrampoline(std::span<const std::uint8_t> code, std::uintptr_t target,
                                           std::uintptr_t block, std::uintptr_t detour) noexcept
{
    const std::optional<SPrologue> prologue = readPrologue(code);
    if (!prologue || isEnteredFromBehind(code, target, prologue->size))
    {
        return std::nullopt;
    }
    return CBuilder(code, *prologue, target, block).Run(detour);
}

} // namespace LuTestSuite

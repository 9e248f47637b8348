#include "testing/lutestsuite/heap/instruction.h"

#include <algorithm>
#include <cstring>

namespace LuTestSuite
{

namespace
{

// What follows each operation code:
//   .  nothing            M  ModRM                 x  no instruction in 64-bit mode
//   b  imm8               B  ModRM, imm8           p  legacy prefix
//   w  imm16              z  imm16 or imm32        Z  ModRM, imm16 or imm32
//   e  imm16, imm8        v  imm16, 32 or 64       o  address of 64 or 32 bits
//   j  rel8               J  rel32                 R  REX
//   3  ModRM, and imm8 if the middle field of ModRM is 0 or 1 (TEST)
//   4  the same with imm16 or imm32
//   C  ModRM of control and debug registers, never memory
//   S  escape to another map, VEX or EVEX
// Only getForm returns these:
//   W  ModRM, two bytes   D  ModRM, four bytes
constexpr char c_OneByteMap[] = "MMMMbzxxMMMMbzxS"  // 00
                                "MMMMbzxxMMMMbzxx"  // 10
                                "MMMMbzpxMMMMbzpx"  // 20
                                "MMMMbzpxMMMMbzpx"  // 30
                                "RRRRRRRRRRRRRRRR"  // 40
                                "................"  // 50
                                "xxSMppppzZbB...."  // 60
                                "jjjjjjjjjjjjjjjj"  // 70
                                "BZxBMMMMMMMMMMMM"  // 80
                                "..........x....."  // 90
                                "oooo....bz......"  // A0
                                "bbbbbbbbvvvvvvvv"  // B0
                                "BBw.SSBZe.w..bx."  // C0
                                "MMMMxxx.MMMMMMMM"  // D0
                                "jjjjbbbbJJxj...."  // E0
                                "p.pp..34......MM"; // F0

constexpr char c_Map0F[] = "MMMMx.....x.xMxx"  // 00
                           "MMMMMMMMMMMMMMMM"  // 10
                           "CCCCxxxxMMMMMMMM"  // 20
                           "......x.SxSxxxxx"  // 30
                           "MMMMMMMMMMMMMMMM"  // 40
                           "MMMMMMMMMMMMMMMM"  // 50
                           "MMMMMMMMMMMMMMMM"  // 60
                           "BBBBMMM.MMxxMMMM"  // 70
                           "JJJJJJJJJJJJJJJJ"  // 80
                           "MMMMMMMMMMMMMMMM"  // 90
                           "...MBMxx...MBMMM"  // A0
                           "MMMMMMMMMMBMMMMM"  // B0
                           "MMBMBBBM........"  // C0
                           "MMMMMMMMMMMMMMMM"  // D0
                           "MMMMMMMMMMMMMMMM"  // E0
                           "MMMMMMMMMMMMMMMM"; // F0

constexpr std::uint8_t c_Lock = 0xF0;
constexpr std::uint8_t c_RepeatNotZero = 0xF2;
constexpr std::uint8_t c_Repeat = 0xF3;
constexpr std::uint8_t c_OperandSize = 0x66;
constexpr std::uint8_t c_AddressSize = 0x67;
constexpr std::uint8_t c_RexW = 0x08;

class CDecoder
{
public:
    explicit CDecoder(std::span<const std::uint8_t> code) noexcept
        : m_code(code.first(std::min(code.size(), c_InstructionMax)))
    {
    }

    std::optional<SInstruction> Run() noexcept
    {
        if (!readPrefixes() || !readOpcode())
        {
            return std::nullopt;
        }
        readOperands(getForm());
        if (!m_isGood)
        {
            return std::nullopt;
        }
        m_instruction.length = static_cast<std::uint8_t>(m_position);
        return m_instruction;
    }

private:
    static bool has(char form, const char* forms) noexcept { return std::strchr(forms, form) != nullptr; }

    std::uint8_t peek(std::size_t ahead = 0) noexcept
    {
        if (m_position + ahead >= m_code.size())
        {
            m_isGood = false;
            return 0;
        }
        return m_code[m_position + ahead];
    }

    std::uint8_t take() noexcept
    {
        const std::uint8_t byte = peek();
        m_position += m_isGood ? 1U : 0U;
        return byte;
    }

    void skip(std::size_t count) noexcept
    {
        m_isGood = m_isGood && count <= m_code.size() - m_position;
        m_position += m_isGood ? count : 0U;
    }

    bool readPrefixes() noexcept
    {
        while (m_isGood)
        {
            const std::uint8_t byte = peek();
            const char form = c_OneByteMap[byte];
            if (form == 'R')
            {
                m_rex = byte;
            }
            else if (form == 'p')
            {
                notePrefix(byte);
                // REX takes effect only directly in front of the operation code.
                m_rex = 0;
            }
            else
            {
                break;
            }
            take();
        }
        return m_isGood;
    }

    void notePrefix(std::uint8_t byte) noexcept
    {
        m_hasOperandSize = m_hasOperandSize || byte == c_OperandSize;
        m_hasAddressSize = m_hasAddressSize || byte == c_AddressSize;
        m_hasRepeatNotZero = m_hasRepeatNotZero || byte == c_RepeatNotZero;
        m_forbidsVex =
            m_forbidsVex || byte == c_OperandSize || byte == c_Repeat || byte == c_RepeatNotZero || byte == c_Lock;
    }

    bool readOpcode() noexcept
    {
        const std::uint8_t byte = take();
        if (byte == 0x0F)
        {
            readEscaped();
        }
        else if (byte == 0xC5 || byte == 0xC4 || byte == 0x62 || (byte == 0x8F && (peek() & 0x1FU) >= 8))
        {
            readExtended(byte);
        }
        else
        {
            setOpcode(EOpcodeMap::OneByte, byte);
        }
        return m_isGood;
    }

    void setOpcode(EOpcodeMap map, std::uint8_t opcode) noexcept
    {
        m_instruction.map = map;
        m_instruction.opcode = opcode;
        m_instruction.opcodeOffset = static_cast<std::uint8_t>(m_position - 1);
    }

    void readEscaped() noexcept
    {
        const std::uint8_t byte = take();
        if (byte == 0x38 || byte == 0x3A)
        {
            setOpcode(byte == 0x38 ? EOpcodeMap::Map0F38 : EOpcodeMap::Map0F3A, take());
            return;
        }
        setOpcode(EOpcodeMap::Map0F, byte);
    }

    void readExtended(std::uint8_t prefix) noexcept
    {
        m_isGood = m_isGood && m_rex == 0 && !m_forbidsVex;
        constexpr std::uint8_t c_MapMask = 0x1F;
        m_extendedMap = 1;
        if (prefix != 0xC5)
        {
            m_extendedMap = take() & (prefix == 0x62 ? 0x07U : c_MapMask);
        }
        // The rest of the prefix: two bytes after 62 (EVEX), otherwise one.
        skip(prefix == 0x62 ? 2 : 1);
        setOpcode(EOpcodeMap::Extended, take());
        m_isEvex = prefix == 0x62;
        m_isXop = prefix == 0x8F;
    }

    char getForm() const noexcept
    {
        switch (m_instruction.map)
        {
        case EOpcodeMap::OneByte:
            return c_OneByteMap[m_instruction.opcode];
        case EOpcodeMap::Map0F:
            // With one of these prefixes, 0F 78 is EXTRQ or INSERTQ, whose ModRM is followed by two bytes.
            if (m_instruction.opcode == 0x78 && (m_hasOperandSize || m_hasRepeatNotZero))
            {
                return 'W';
            }
            return c_Map0F[m_instruction.opcode];
        case EOpcodeMap::Map0F38:
            return 'M';
        case EOpcodeMap::Map0F3A:
            return 'B';
        default:
            return m_isXop ? getXopForm() : getVexForm();
        }
    }

    char getVexForm() const noexcept
    {
        switch (m_extendedMap)
        {
        case 1:
            // Codes without M or B have no extended form, except 77: VZEROUPPER and VZEROALL, which have no operands.
            return has(c_Map0F[m_instruction.opcode], "MB") || (m_instruction.opcode == 0x77 && !m_isEvex)
                       ? c_Map0F[m_instruction.opcode]
                       : 'x';
        case 2:
            return 'M';
        case 3:
            return 'B';
        case 5:
        case 6:
            return m_isEvex ? 'M' : 'x';
        default:
            return 'x';
        }
    }

    char getXopForm() const noexcept
    {
        constexpr char c_Forms[] = "BMD";
        return m_extendedMap >= 8 && m_extendedMap <= 10 ? c_Forms[m_extendedMap - 8U] : 'x';
    }

    void readOperands(char form) noexcept
    {
        m_isGood = m_isGood && !has(form, "xSpR");
        if (m_isGood && has(form, "MBZC34WD"))
        {
            readModRM(form == 'C');
        }
        m_instruction.immediateOffset = static_cast<std::uint8_t>(m_position);
        m_instruction.immediateSize = static_cast<std::uint8_t>(getImmediateSize(form));
        skip(m_instruction.immediateSize);
        m_instruction.relative = getRelative(form);
    }

    void readModRM(bool isRegister) noexcept
    {
        const std::uint8_t modRM = take();
        m_instruction.hasModRM = true;
        m_instruction.modRM = modRM;
        const unsigned mode = modRM >> 6U;
        if (mode == 3 || isRegister)
        {
            return;
        }
        unsigned base = modRM & 7U;
        if (base == 4)
        {
            base = take() & 7U;
        }
        else
        {
            m_instruction.isRipRelative = mode == 0 && base == 5;
        }
        m_instruction.displacementOffset = static_cast<std::uint8_t>(m_position);
        if (mode == 1)
        {
            m_instruction.displacementSize = 1;
        }
        else if (mode == 2 || base == 5)
        {
            m_instruction.displacementSize = 4;
        }
        skip(m_instruction.displacementSize);
    }

    std::size_t getImmediateSize(char form) const noexcept
    {
        const bool isWide = (m_rex & c_RexW) != 0;
        const std::size_t usual = m_hasOperandSize && !isWide ? 2 : 4;
        const bool isTest = ((m_instruction.modRM >> 3U) & 7U) < 2;
        switch (form)
        {
        case 'b':
        case 'B':
        case 'j':
            return 1;
        case 'w':
        case 'W':
            return 2;
        case 'e':
            return 3;
        case 'J':
        case 'D':
            return 4;
        case 'z':
        case 'Z':
            return usual;
        case 'v':
            return isWide ? 8 : usual;
        case 'o':
            return m_hasAddressSize ? 4 : 8;
        case '3':
            return isTest ? 1 : 0;
        case '4':
            return isTest ? usual : 0;
        default:
            return 0;
        }
    }

    ERelative getRelative(char form) const noexcept
    {
        const std::uint8_t opcode = m_instruction.opcode;
        if (m_instruction.map == EOpcodeMap::OneByte && opcode == 0xC7 && m_instruction.modRM == 0xF8)
        {
            return ERelative::Transaction;
        }
        if (!has(form, "jJ"))
        {
            return ERelative::None;
        }
        if (m_instruction.map == EOpcodeMap::Map0F || opcode < 0x80)
        {
            return ERelative::Conditional;
        }
        if (opcode <= 0xE3)
        {
            return ERelative::Loop;
        }
        return opcode == 0xE8 ? ERelative::Call : ERelative::Jump;
    }

    std::span<const std::uint8_t> m_code;
    std::size_t m_position = 0;
    bool m_isGood = true;
    std::uint8_t m_rex = 0;
    bool m_hasOperandSize = false;
    bool m_hasAddressSize = false;
    bool m_hasRepeatNotZero = false;
    bool m_forbidsVex = false;
    bool m_isEvex = false;
    bool m_isXop = false;
    unsigned m_extendedMap = 0;
    SInstruction m_instruction;
};

std::int64_t readSigned(const std::uint8_t* code, std::size_t size) noexcept
{
    if (size == 1)
    {
        return static_cast<std::int8_t>(*code);
    }
    if (size == 2)
    {
        std::int16_t value = 0;
        std::memcpy(&value, code, sizeof(value));
        return value;
    }
    std::int32_t value = 0;
    std::memcpy(&value, code, sizeof(value));
    return value;
}

} // namespace

std::optional<SInstruction> DecodeInstruction(std::span<const std::uint8_t> code) noexcept
{
    return CDecoder(code).Run();
}

std::uintptr_t GetRelativeDestination(const SInstruction& instruction, const std::uint8_t* code,
                                      std::uintptr_t address) noexcept
{
    const bool isBranch = instruction.relative != ERelative::None;
    const std::int64_t displacement =
        isBranch ? readSigned(code + instruction.immediateOffset, instruction.immediateSize)
                 : readSigned(code + instruction.displacementOffset, instruction.displacementSize);
    return address + instruction.length + static_cast<std::uintptr_t>(displacement);
}

} // namespace LuTestSuite

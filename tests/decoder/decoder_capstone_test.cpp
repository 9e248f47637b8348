/// Compares instruction lengths with those of Capstone, over whole libraries.
#include <cstdlib>
#include <fstream>
#include <map>

#include <capstone/capstone.h>
#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "testing/lutestsuite/heap/instruction.h"
#include "tests/decoder/codesections.h"
#include "tests/support/places.h"
#include "tests/support/scopedfolder.h"

namespace
{

const std::string c_SystemLibraries = "/lib/x86_64-linux-gnu/";
const std::string c_WineLibraries = "/usr/lib/x86_64-linux-gnu/wine/x86_64-windows/";

/// Reads one instruction at a time with Capstone.
class CCapstone
{
public:
    CCapstone() { cs_open(CS_ARCH_X86, CS_MODE_64, &m_handle); }
    ~CCapstone()
    {
        cs_free(m_instruction, 1);
        cs_close(&m_handle);
    }
    CCapstone(const CCapstone&) = delete;
    CCapstone& operator=(const CCapstone&) = delete;

    /// 0 for instructions that Capstone does not know.
    std::size_t GetLength(std::span<const std::uint8_t> code)
    {
        const std::uint8_t* position = code.data();
        std::size_t size = code.size();
        std::uint64_t address = 0;
        return cs_disasm_iter(m_handle, &position, &size, &address, instruction()) ? m_instruction->size : 0;
    }

    std::string GetText() const { return std::string(m_instruction->mnemonic) + " " + m_instruction->op_str; }
    bool EndsPath() const
    {
        return m_instruction->id == X86_INS_RET || m_instruction->id == X86_INS_JMP ||
               m_instruction->id == X86_INS_INT3 || m_instruction->id == X86_INS_UD2;
    }

private:
    cs_insn* instruction()
    {
        if (m_instruction == nullptr)
        {
            m_instruction = cs_malloc(m_handle);
        }
        return m_instruction;
    }

    csh m_handle = 0;
    cs_insn* m_instruction = nullptr;
};

std::size_t getOwnLength(std::span<const std::uint8_t> code)
{
    const auto instruction = LuTestSuite::DecodeInstruction(code);
    return instruction ? instruction->length : 0;
}

class DecoderCapstone : public testing::Test
{
protected:
    /// Compares one instruction, and returns the distance to the next one. Instructions that Capstone does not know are
    /// recorded, but not compared.
    std::size_t compare(const SCodeSection& section, std::size_t offset)
    {
        const std::span<const std::uint8_t> code = std::span(section.bytes).subspan(offset);
        const std::size_t expected = m_capstone.GetLength(code);
        const std::size_t own = getOwnLength(code);
        if (expected == 0)
        {
            ++m_unknownCount;
            m_unknown[section.address + offset] = own;
            return std::max<std::size_t>(own, 1);
        }
        ++m_count;
        if (own != expected)
        {
            ++m_differenceCount;
            ADD_FAILURE() << std::hex << section.address + offset << ": " << m_capstone.GetText() << " has " << expected
                          << " bytes, not " << own;
        }
        return expected;
    }

    void compareAll(const std::string& path)
    {
        for (const SCodeSection& section : ReadCodeSections(path))
        {
            for (std::size_t offset = 0; offset < section.bytes.size() && m_differenceCount < 20;)
            {
                offset += compare(section, offset);
            }
        }
    }

    /// Compares each function of the unwind table completely.
    void compareFunctions(const std::string& path)
    {
        for (const SCodeSection& section : ReadCodeSections(path))
        {
            for (const SFunction& function : section.functions)
            {
                for (std::size_t offset = function.begin; offset < function.end && m_differenceCount < 20;)
                {
                    offset += compare(section, offset);
                }
            }
        }
    }

    /// Compares each exported function up to its first return, because the unwind table lacks the shortest functions.
    void compareExports(const std::string& path)
    {
        for (const SCodeSection& section : ReadCodeSections(path))
        {
            for (const std::size_t entry : section.entries)
            {
                std::size_t offset = entry;
                bool goesOn = true;
                while (goesOn && offset < section.bytes.size() && m_differenceCount < 20)
                {
                    const std::size_t unknown = m_unknownCount;
                    offset += compare(section, offset);
                    goesOn = unknown == m_unknownCount && !m_capstone.EndsPath();
                }
            }
        }
    }

    /// Compares the lengths of instructions unknown to Capstone with the list of objdump, which shows where each
    /// instruction begins. objdump lists an instruction unknown to it as bad. Addresses where objdump begins no
    /// instruction are not compared.
    void compareUnknownWithObjdump(const std::string& path)
    {
        const ScopedFolder folder;
        const std::string list = LbEncoding::ToUtf8(folder.GetPath() + L"list");
        ASSERT_EQ(std::system(("objdump -d -w --no-show-raw-insn " + path + " > '" + list + "'").c_str()), 0);
        std::ifstream lines(list);
        std::size_t judged = 0;
        std::uint64_t previous = 0;
        bool isPreviousBad = true;
        for (std::string line; std::getline(lines, line);)
        {
            const std::size_t colon = line.find(":\t");
            if (!line.starts_with(' ') || colon == std::string::npos)
            {
                isPreviousBad = true;
                continue;
            }
            const std::uint64_t address = std::stoull(line, nullptr, 16);
            const auto unknown = m_unknown.find(previous);
            if (unknown != m_unknown.end() && !isPreviousBad)
            {
                ++judged;
                EXPECT_EQ(unknown->second, address - previous) << std::hex << previous;
            }
            previous = address;
            isPreviousBad = line.find("(bad)", colon) != std::string::npos;
        }
        RecordProperty("judged by objdump", std::to_string(judged));
        EXPECT_GE(judged, m_unknown.size() * 9 / 10);
    }

    void expectCompared(std::size_t least) const
    {
        RecordProperty("instructions", std::to_string(m_count));
        RecordProperty("unknown to Capstone", std::to_string(m_unknownCount));
        EXPECT_GT(m_count, least);
        EXPECT_LT(m_unknownCount, m_count / 100);
    }

    CCapstone m_capstone;
    std::size_t m_count = 0;
    std::size_t m_unknownCount = 0;
    std::map<std::uint64_t, std::size_t> m_unknown; ///< lengths found by our decoder, by address
    std::size_t m_differenceCount = 0;
};

} // namespace

TEST_F(DecoderCapstone, AgreesOnTheCLibrary)
{
    compareAll(c_SystemLibraries + "libc.so.6");
    expectCompared(300'000);
    compareUnknownWithObjdump(c_SystemLibraries + "libc.so.6");
}

TEST_F(DecoderCapstone, AgreesOnTheStandardLibrary)
{
    compareAll("/usr" + c_SystemLibraries + "libstdc++.so.6");
    expectCompared(200'000);
}

TEST_F(DecoderCapstone, AgreesOnTheProjectsLibraries)
{
    compareAll(LUTESTSUITE_BIN_DIR "/libLbBase.so");
    compareAll(LUTESTSUITE_BIN_DIR "/libLuTestSuite.so");
    expectCompared(10'000);
}

TEST_F(DecoderCapstone, AgreesOnWinesLibraries)
{
    if (!std::ifstream(c_WineLibraries + "msvcrt.dll"))
    {
        GTEST_SKIP() << "Wine is not installed";
    }
    for (const char* const library : {"msvcrt.dll", "ucrtbase.dll", "ntdll.dll", "kernel32.dll", "kernelbase.dll"})
    {
        compareExports(c_WineLibraries + library);
        compareFunctions(c_WineLibraries + library);
    }
    expectCompared(300'000);
}

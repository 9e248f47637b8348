#include "tests/decoder/codesections.h"

#include <cstring>
#include <fstream>
#include <iterator>

namespace
{

/// Reads little-endian numbers at any offset of a file; 0 beyond its end.
class CImage
{
public:
    explicit CImage(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        m_bytes.assign(std::istreambuf_iterator<char>(file), {});
    }

    template<typename T>
    T Read(std::uint64_t offset) const
    {
        T value = 0;
        if (offset <= m_bytes.size() && sizeof(T) <= m_bytes.size() - offset)
        {
            std::memcpy(&value, &m_bytes[offset], sizeof(T));
        }
        return value;
    }
    std::uint16_t Read16(std::uint64_t offset) const { return Read<std::uint16_t>(offset); }
    std::uint32_t Read32(std::uint64_t offset) const { return Read<std::uint32_t>(offset); }
    std::uint64_t Read64(std::uint64_t offset) const { return Read<std::uint64_t>(offset); }

    std::vector<std::uint8_t> Cut(std::uint64_t offset, std::uint64_t size) const
    {
        if (offset > m_bytes.size() || size > m_bytes.size() - offset)
        {
            return {};
        }
        const auto begin = m_bytes.begin() + static_cast<std::ptrdiff_t>(offset);
        return {begin, begin + static_cast<std::ptrdiff_t>(size)};
    }

private:
    std::vector<char> m_bytes;
};

std::vector<SCodeSection> readElf(const CImage& image)
{
    constexpr std::uint32_t c_Program = 1;
    constexpr std::uint64_t c_Executable = 4;
    constexpr std::uint64_t c_HeaderSize = 64;
    std::vector<SCodeSection> sections;
    const std::uint64_t table = image.Read64(0x28);
    for (std::uint64_t index = 0; index < image.Read16(0x3C); ++index)
    {
        const std::uint64_t header = table + index * c_HeaderSize;
        if (image.Read32(header + 4) == c_Program && (image.Read64(header + 8) & c_Executable) != 0)
        {
            sections.push_back(
                {image.Read64(header + 16), image.Cut(image.Read64(header + 24), image.Read64(header + 32)), {}, {}});
        }
    }
    return sections;
}

struct SPeSection
{
    std::uint32_t address;
    std::uint32_t size;
    std::uint32_t offset;
    bool isExecutable;
};

std::vector<SPeSection> readPeSections(const CImage& image, std::uint64_t header)
{
    constexpr std::uint32_t c_Executable = 0x20000000;
    std::vector<SPeSection> sections;
    const std::uint64_t table = header + 24 + image.Read16(header + 20);
    for (std::uint64_t index = 0; index < image.Read16(header + 6); ++index)
    {
        const std::uint64_t entry = table + index * 40;
        sections.push_back({image.Read32(entry + 12), image.Read32(entry + 16), image.Read32(entry + 20),
                            (image.Read32(entry + 36) & c_Executable) != 0});
    }
    return sections;
}

std::uint64_t toOffset(const std::vector<SPeSection>& sections, std::uint32_t address)
{
    for (const SPeSection& section : sections)
    {
        if (address >= section.address && address < section.address + section.size)
        {
            return section.offset + (address - section.address);
        }
    }
    return ~std::uint64_t{0};
}

/// The functions of the unwind table that lie in the section.
std::vector<SFunction> readFunctions(const CImage& image, std::uint64_t header, const std::vector<SPeSection>& table,
                                     const SCodeSection& code)
{
    constexpr std::uint64_t c_EntrySize = 12;
    constexpr std::uint64_t c_ExceptionDirectory = 24 + 112 + 3 * 8;
    const std::uint64_t entries = toOffset(table, image.Read32(header + c_ExceptionDirectory));
    const std::uint64_t size = image.Read32(header + c_ExceptionDirectory + 4);
    std::vector<SFunction> functions;
    for (std::uint64_t offset = 0; offset + c_EntrySize <= size; offset += c_EntrySize)
    {
        const std::uint64_t begin = image.Read32(entries + offset);
        const std::uint64_t end = image.Read32(entries + offset + 4);
        if (begin >= code.address && begin < end && end <= code.address + code.bytes.size())
        {
            functions.push_back({begin - code.address, end - code.address});
        }
    }
    return functions;
}

std::vector<SCodeSection> readPe(const CImage& image)
{
    const std::uint64_t header = image.Read32(0x3C);
    const std::vector<SPeSection> table = readPeSections(image, header);
    const std::uint64_t exports = toOffset(table, image.Read32(header + 24 + 112));
    const std::uint64_t functions = toOffset(table, image.Read32(exports + 28));
    std::vector<SCodeSection> sections;
    for (const SPeSection& section : table)
    {
        if (!section.isExecutable)
        {
            continue;
        }
        SCodeSection& code = sections.emplace_back();
        code.address = section.address;
        code.bytes = image.Cut(section.offset, section.size);
        code.functions = readFunctions(image, header, table, code);
        for (std::uint64_t index = 0; index < image.Read32(exports + 20); ++index)
        {
            const std::uint32_t entry = image.Read32(functions + index * 4);
            if (entry >= section.address && entry < section.address + code.bytes.size())
            {
                code.entries.push_back(entry - section.address);
            }
        }
    }
    return sections;
}

} // namespace

std::vector<SCodeSection> ReadCodeSections(const std::string& path)
{
    constexpr std::uint32_t c_Elf = 0x464C457F;
    constexpr std::uint16_t c_Dos = 0x5A4D;
    const CImage image(path);
    if (image.Read32(0) == c_Elf)
    {
        return readElf(image);
    }
    return image.Read16(0) == c_Dos ? readPe(image) : std::vector<SCodeSection>();
}

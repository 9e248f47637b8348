#include "testing/lutestsuite/duplicates/filechecksums.h"

#include <algorithm>
#include <limits>

#include "base/lbexception.h"

namespace LuTestSuite
{

std::optional<LuMurmurHash3::S128> CFileChecksums::Get(const std::wstring& path)
{
    LuStreamReadBinaryFile file(path);
    const std::uint64_t size = file.GetSize();
    if (size > std::numeric_limits<std::uint32_t>::max())
    {
        return std::nullopt;
    }
    // Reading one byte more than the file's size shows whether the file has grown meanwhile.
    reserve(static_cast<std::size_t>(size) + 1);
    return readAndCompute(file, static_cast<std::uint32_t>(size));
}

LuMurmurHash3::S128 CFileChecksums::GetOfBeginning(const std::wstring& path)
{
    LuStreamReadBinaryFile file(path);
    reserve(sc_uiBeginning);
    const std::size_t size = file.Read(m_buffer.get(), sc_uiBeginning);
    return LuMurmurHash3::GetOptimizedChecksum128(m_buffer.get(), static_cast<std::uint32_t>(size), 0);
}

void CFileChecksums::reserve(std::size_t size)
{
    if (m_capacity < size)
    {
        m_capacity = 0;
        // Released first, so that memory never holds two files.
        m_buffer.reset();
        m_buffer = std::make_unique_for_overwrite<char[]>(size);
        m_capacity = size;
    }
}

/// Hashes each piece while it is in the processor's cache.
LuMurmurHash3::S128 CFileChecksums::readAndCompute(LuStreamReadBinaryFile& file, std::uint32_t size)
{
    constexpr std::size_t c_PieceSize = 128 * 1024;
    const std::size_t wanted = std::size_t{size} + 1;
    std::size_t total = 0;
    const auto readPiece = [&](std::size_t /*count*/) {
        const std::size_t piece = std::min(c_PieceSize, wanted - total);
        const std::size_t count = file.Read(m_buffer.get() + total, piece);
        total += count;
        // A piece may be short only at the end of the file, where the additional byte is missing.
        if (count < piece && total != size)
        {
            throw LbException();
        }
        return total;
    };
    const LuMurmurHash3::S128 checksum = LuMurmurHash3::GetOptimizedChecksum128(m_buffer.get(), size, 0, readPiece);
    if (total < wanted)
    {
        readPiece(wanted);
    }
    if (total != size)
    {
        throw LbException();
    }
    return checksum;
}

} // namespace LuTestSuite

/// Checksums of files and of their beginnings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "base/inoncopyable.h"
#include "base/lumurmurhash3.h"
#include "base/lustream.h"

namespace LuTestSuite
{

/// Reads files, one at a time, and computes their checksums. Reuses the memory of a file for the next one. One
/// thread at a time.
class CFileChecksums : public INonCopyable
{
public:
    /// Empty for a file that is too long for a checksum: 4 GiB or more. Throws LbException if the file cannot be read
    /// completely.
    std::optional<LuMurmurHash3::S128> Get(const std::wstring& path);

    /// Size of a beginning in bytes: file systems read at least that much at once.
    static constexpr std::size_t sc_uiBeginning = 4096;

    /// The checksum of the beginning, or of the whole file if it is shorter. Throws LbException if reading fails.
    LuMurmurHash3::S128 GetOfBeginning(const std::wstring& path);

private:
    void reserve(std::size_t size);
    LuMurmurHash3::S128 readAndCompute(LuStreamReadBinaryFile& file, std::uint32_t size);

    std::unique_ptr<char[]> m_buffer;
    std::size_t m_capacity = 0;
};

} // namespace LuTestSuite

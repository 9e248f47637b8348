/// Checksums of whole files.
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

class CBackgroundReader;

/// Reads whole files, one at a time, and computes their checksums. The memory for a file serves the next one, too. One
/// thread at a time.
class CFileChecksums : public INonCopyable
{
public:
    CFileChecksums();
    ~CFileChecksums();

    /// Nothing for a file that is too long for a checksum. Throws LbException when the file cannot be read as a whole.
    std::optional<LuMurmurHash3::S128> Get(const std::wstring& path);

    /// Bytes of a beginning: as many as a file system reads at once anyway.
    static constexpr std::size_t sc_uiBeginning = 4096;

    /// The checksum of the first bytes, of all that there are in a shorter file. Throws LbException when they cannot be
    /// read.
    LuMurmurHash3::S128 GetOfBeginning(const std::wstring& path);

private:
    bool hasReader();
    void reserve(std::size_t size);
    LuMurmurHash3::S128 readAndCompute(LuStreamReadBinaryFile& file, std::uint32_t size);
    LuMurmurHash3::S128 computeWhileReading(LuStreamReadBinaryFile& file, std::uint32_t size);

    std::unique_ptr<char[]> m_buffer;
    std::size_t m_capacity = 0;
    std::unique_ptr<CBackgroundReader> m_reader; ///< made for the first large file
};

} // namespace LuTestSuite

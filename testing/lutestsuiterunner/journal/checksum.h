/// Checksums of records and digests of files. Any thread; a digest object belongs to one thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace Runner
{

/// XXH3, 64 bits; the same on all platforms.
std::uint64_t GetChecksum(std::string_view bytes) noexcept;

/// XXH3, 128 bits, of bytes that are added piece by piece.
class CDigest
{
public:
    CDigest();
    ~CDigest();
    CDigest(const CDigest&) = delete;
    CDigest& operator=(const CDigest&) = delete;

    void Add(std::string_view bytes) noexcept;

    /// 32 hexadecimal digits.
    std::string GetText() const;

private:
    struct SState;

    std::unique_ptr<SState> m_state;
};

} // namespace Runner

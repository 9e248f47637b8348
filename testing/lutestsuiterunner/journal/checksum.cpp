#include "testing/lutestsuiterunner/journal/checksum.h"

#include <xxhash.h>

#include "testing/lutestsuiterunner/journal/numbertext.h"

namespace Runner
{

struct CDigest::SState
{
    XXH3_state_t state;
};

std::uint64_t GetChecksum(std::string_view bytes) noexcept
{
    return XXH3_64bits(bytes.data(), bytes.size());
}

CDigest::CDigest() : m_state(std::make_unique<SState>())
{
    XXH3_128bits_reset(&m_state->state);
}

CDigest::~CDigest() = default;

void CDigest::Add(std::string_view bytes) noexcept
{
    XXH3_128bits_update(&m_state->state, bytes.data(), bytes.size());
}

std::string CDigest::GetText() const
{
    const XXH128_hash_t hash = XXH3_128bits_digest(&m_state->state);
    std::string text;
    AppendHexadecimal(hash.high64, text);
    AppendHexadecimal(hash.low64, text);
    return text;
}

} // namespace Runner

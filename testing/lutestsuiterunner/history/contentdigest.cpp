#include "testing/lutestsuiterunner/history/contentdigest.h"

#include <xxhash.h>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"

namespace Runner::History
{

std::string GetDigest(std::string_view bytes)
{
    constexpr char c_Digits[] = "0123456789abcdef";
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits(bytes.data(), bytes.size()));
    std::string text;
    for (const unsigned char byte : canonical.digest)
    {
        text += c_Digits[byte / 16];
        text += c_Digits[byte % 16];
    }
    return text;
}

std::string GetFileDigest(const std::wstring& path)
try
{
    return GetDigest(LbFileSystem::ReadFile8Bit(path));
}
catch (const LbException&)
{
    return {};
}

} // namespace Runner::History

#include "testing/lutestsuiterunner/history/archive/contentdigest.h"

#include <vector>

#include "base/lbexception.h"
#include "base/lustream.h"
#include "testing/lutestsuiterunner/journal/checksum.h"

namespace Runner::History
{

std::string GetDigest(std::string_view bytes)
{
    CDigest digest;
    digest.Add(bytes);
    return digest.GetText();
}

std::string GetFileDigest(const std::wstring& path)
try
{
    constexpr std::size_t c_BlockSize = 1 << 17U;
    LuStreamReadBinaryFile file(path);
    CDigest digest;
    std::vector<char> block(c_BlockSize);
    while (const std::size_t size = file.Read(block.data(), block.size()))
    {
        digest.Add(std::string_view(block.data(), size));
    }
    return digest.GetText();
}
catch (const LbException&)
{
    return {};
}

} // namespace Runner::History

#include "examples/support/bytes.h"

#include <algorithm>
#include <cstdint>

#include "base/lbformat.h"

std::wstring DescribeDifference(std::string_view expected, std::string_view actual)
{
    const auto [inExpected, inActual] = std::ranges::mismatch(expected, actual);
    const auto offset = static_cast<std::size_t>(inExpected - expected.begin());
    if (inExpected != expected.end() && inActual != actual.end())
    {
        return LbFormat(L"byte %u is 0x%02X instead of 0x%02X", offset, static_cast<std::uint8_t>(*inActual),
                        static_cast<std::uint8_t>(*inExpected));
    }
    if (expected.size() != actual.size())
    {
        return LbFormat(L"%u bytes instead of %u", actual.size(), expected.size());
    }
    return {};
}

std::string MakeNoise(std::size_t size)
{
    // A linear congruential generator: the standard distributions differ between run-time libraries.
    constexpr std::uint32_t c_Factor = 1664525;
    constexpr std::uint32_t c_Increment = 1013904223;
    constexpr std::uint32_t c_HighByteShift = 24;
    std::string noise(size, '\0');
    std::uint32_t state = 1;
    for (char& byte : noise)
    {
        state = state * c_Factor + c_Increment;
        byte = static_cast<char>(state >> c_HighByteShift);
    }
    return noise;
}

std::string MakeEveryByte()
{
    constexpr std::size_t c_ByteValues = 256;
    std::string bytes(c_ByteValues, '\0');
    for (std::size_t value = 0; value < bytes.size(); ++value)
    {
        bytes[value] = static_cast<char>(value);
    }
    return bytes;
}

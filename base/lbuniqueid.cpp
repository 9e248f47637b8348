#include "base/lbuniqueid.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/os/clock.h"

std::wstring LbUniqueId::Generate()
{
    std::array<std::uint8_t, 16> bytes{};
    LbOs::FillRandom(bytes.data(), bytes.size());
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0FU) | 0x40U); // version 4: random
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3FU) | 0x80U); // variant of RFC 4122

    constexpr const wchar_t* c_Digits = L"0123456789abcdef";
    std::wstring result;
    result.reserve(36);
    for (std::size_t index = 0; index < bytes.size(); ++index)
    {
        if (index == 4 || index == 6 || index == 8 || index == 10)
        {
            result.push_back(L'-');
        }
        result.push_back(c_Digits[bytes[index] >> 4U]);
        result.push_back(c_Digits[bytes[index] & 0x0FU]);
    }
    return result;
}

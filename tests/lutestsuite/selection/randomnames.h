/// Random names of cases.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace RandomNames
{

using Texts = std::vector<std::wstring>;

/// Gives the same sequence on all platforms.
class CRandom
{
public:
    explicit CRandom(std::uint32_t seed) : m_engine(seed) {}

    std::uint32_t Below(std::size_t limit) { return static_cast<std::uint32_t>(m_engine() % limit); }

    template<std::size_t Count>
    std::wstring Pick(const std::array<std::wstring_view, Count>& texts)
    {
        return std::wstring(texts[Below(Count)]);
    }

private:
    std::mt19937 m_engine;
};

inline std::wstring MakeName(CRandom& random)
{
    constexpr std::wstring_view c_Characters = L"aabbc1_-. \n\r\t*?{}\\(";
    std::wstring name;
    for (std::uint32_t length = random.Below(9); length > 0; --length)
    {
        name += c_Characters[random.Below(c_Characters.size())];
    }
    return name;
}

inline Texts MakeNames(CRandom& random, std::size_t count)
{
    Texts names;
    while (names.size() < count)
    {
        names.push_back(MakeName(random));
    }
    return names;
}

} // namespace RandomNames

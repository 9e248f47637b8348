/// Colours.
#pragma once

#include <cstdint>

/// A 32-bit colour with opacity: 0xAARRGGBB. A plain value.
class LuColor
{
public:
    constexpr LuColor() = default;
    constexpr explicit LuColor(std::uint32_t value) : m_value(value) {}
    constexpr LuColor(std::uint8_t red, std::uint8_t green, std::uint8_t blue)
        : m_value(0xFF000000U | (static_cast<std::uint32_t>(red) << 16U) | (static_cast<std::uint32_t>(green) << 8U) |
                  blue)
    {
    }

    constexpr std::uint32_t GetValue() const { return m_value; }
    constexpr std::uint8_t GetRed() const { return static_cast<std::uint8_t>(m_value >> 16U); }
    constexpr std::uint8_t GetGreen() const { return static_cast<std::uint8_t>(m_value >> 8U); }
    constexpr std::uint8_t GetBlue() const { return static_cast<std::uint8_t>(m_value); }

    friend constexpr bool operator==(LuColor, LuColor) = default;

    static const LuColor c_GRAY;
    static const LuColor c_RED;
    static const LuColor c_GREEN;
    static const LuColor c_BLUE;
    static const LuColor c_DARKBLUE;
    static const LuColor c_GOLDENROD;

private:
    std::uint32_t m_value = 0xFFFFFFFFU;
};

inline constexpr LuColor LuColor::c_GRAY{128, 128, 128};
inline constexpr LuColor LuColor::c_RED{255, 0, 0};
inline constexpr LuColor LuColor::c_GREEN{0, 128, 0};
inline constexpr LuColor LuColor::c_BLUE{0, 0, 255};
inline constexpr LuColor LuColor::c_DARKBLUE{0, 0, 139};
inline constexpr LuColor LuColor::c_GOLDENROD{218, 165, 32};

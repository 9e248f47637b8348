/// Wide printf with one meaning on all platforms.
///
/// Conversions: %d %i (signed), %u %x %X (unsigned), %c (wide character), %s (wide text), %S (narrow text, UTF-8), %p
/// ("0x" is the format's business; 16 upper-case hexadecimal digits), %f %e %g (double), %%; flags "-", "0", "+", " ",
/// "#", width and precision as digits; the length marks h, l, ll, I32, I64, w, z, j, t are accepted and change nothing,
/// since the arguments know their own width. A negative 32-bit argument under %u prints as unsigned 32-bit, an unsigned
/// one under %d as signed: the width of the argument decides. Under %d %u %x a wide character stands for its code.
/// Width and precision of texts count characters, not code units.
///
/// Arguments are checked: a conversion without argument, an argument of the wrong kind, a surplus argument or an
/// unknown conversion throws LbException naming the format. Nothing is ever truncated.
#pragma once

#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "base/lbexport.h"

/// One argument of a format. Refers to texts, never owns them: it lives as long as the full expression of the call.
class LbFormatArgument
{
public:
    enum class EKind
    {
        Signed,
        Unsigned,
        Floating,
        Character,
        Wide,
        Narrow,
        Pointer
    };

    template<std::integral T>
    LbFormatArgument(T value) noexcept // NOLINT(google-explicit-constructor)
        : m_kind(std::is_signed_v<T> ? EKind::Signed : EKind::Unsigned), m_size(sizeof(T)),
          m_bits(static_cast<std::uint64_t>(static_cast<std::int64_t>(value)))
    {
    }
    template<typename T>
    requires std::is_enum_v<T> LbFormatArgument(T value)
    noexcept // NOLINT(google-explicit-constructor)
        : LbFormatArgument(static_cast<std::underlying_type_t<T>>(value))
    {
    }
    LbFormatArgument(wchar_t value) noexcept
        : m_kind(EKind::Character), m_size(sizeof(wchar_t)), m_bits(static_cast<std::uint64_t>(value))
    {
    }
    LbFormatArgument(double value) noexcept : m_kind(EKind::Floating), m_size(sizeof(double)), m_floating(value) {}
    LbFormatArgument(const wchar_t* value) noexcept
        : m_kind(EKind::Wide), m_wide(value == nullptr ? std::wstring_view(L"(null)") : std::wstring_view(value))
    {
    }
    LbFormatArgument(const std::wstring& value) noexcept : m_kind(EKind::Wide), m_wide(value) {}
    LbFormatArgument(std::wstring_view value) noexcept : m_kind(EKind::Wide), m_wide(value) {}
    LbFormatArgument(const char* value) noexcept
        : m_kind(EKind::Narrow), m_narrow(value == nullptr ? std::string_view("(null)") : std::string_view(value))
    {
    }
    LbFormatArgument(const std::string& value) noexcept : m_kind(EKind::Narrow), m_narrow(value) {}
    LbFormatArgument(const void* value) noexcept
        : m_kind(EKind::Pointer), m_size(sizeof(void*)), m_bits(reinterpret_cast<std::uint64_t>(value))
    {
    }

    EKind GetKind() const noexcept { return m_kind; }
    /// Width of an integer in bytes.
    std::size_t GetSize() const noexcept { return m_size; }
    /// An integer's or character's or pointer's value, sign-extended to 64 bits.
    std::uint64_t GetBits() const noexcept { return m_bits; }
    double GetFloating() const noexcept { return m_floating; }
    std::wstring_view GetWide() const noexcept { return m_wide; }
    std::string_view GetNarrow() const noexcept { return m_narrow; }

private:
    EKind m_kind;
    std::size_t m_size = 0;
    std::uint64_t m_bits = 0;
    double m_floating = 0.0;
    std::wstring_view m_wide;
    std::string_view m_narrow;
};

/// Formats with arguments already packed. Any thread.
LB_API std::wstring LbFormatArguments(std::wstring_view format, std::span<const LbFormatArgument> arguments);

/// Formats `arguments` by `format`, see above. Any thread.
template<typename... T>
std::wstring LbFormat(std::wstring_view format, const T&... arguments)
{
    if constexpr (sizeof...(T) == 0)
    {
        return LbFormatArguments(format, {});
    }
    else
    {
        const LbFormatArgument packed[] = {LbFormatArgument(arguments)...};
        return LbFormatArguments(format, packed);
    }
}

/// Wide printf with one meaning on all platforms.
///
/// Conversions:
///
///     %d %i  %u %o %x %X        signed and unsigned integers; a character prints its code
///     %f %F %e %E %g %G %a %A   float, double and long double, rounded by the exact value
///     %s %ls %ws %lS            wide text
///     %S %hs %hS                narrow text, UTF-8
///     %c %lc %wc %lC            a character, or an int of up to 32 bits as the character with this code
///     %C %hc %hC                a character, or the low byte of an int, read as UTF-8
///     %p                        an address as 16 upper-case hexadecimal digits, without "0x"
///     %%                        a percent sign
///
/// Flags "-", "0", "+", " " and "#", width and precision work as in C; "*" takes width or precision from an int
/// argument. They are at most 1,048,575: a larger constant is a mistake, a larger argument counts as that number,
/// except as the precision of a text. For texts, width and precision count characters, not code units. A text that
/// has at least `precision` characters needs no terminating zero. Codes outside of 0 to 0x10FFFF, and bytes that are
/// not UTF-8, print as U+FFFD.
///
/// The argument's type determines how many bits are printed: %d prints all 64 bits of a 64-bit integer, %u prints a
/// negative 32-bit integer as unsigned 32-bit, %d prints an unsigned integer as signed. For numbers, the length
/// modifiers l, ll, L, j, z, t, I, I32 and I64 are ignored; h and hh print the lower 16 and 8 bits, as in C. Output is
/// never truncated.
///
/// A format that does not fit its arguments does not compile. A format created at run time must be wrapped in
/// LbRuntimeFormat and is checked when it is used.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "base/lbexport.h"
#include "base/lbprintf.h"
#include "base/lbsourcelocation.h"

/// One argument of a format. Refers to texts without owning them: valid until the end of the full expression of the
/// call.
class LbFormatArgument
{
public:
    /// The value of GetLength for a null-terminated text.
    static constexpr std::size_t sc_ZeroTerminated = static_cast<std::size_t>(-1);

    template<typename T>
    explicit LbFormatArgument(const T& value) noexcept : m_type(LbPrintf::GetArgumentType<T>())
    {
        constexpr LbPrintf::EKind c_Kind = LbPrintf::GetArgumentType<T>().kind;
        static_assert(c_Kind != LbPrintf::EKind::Other, "printf knows no argument of this type");
        if constexpr (c_Kind == LbPrintf::EKind::Floating)
        {
            m_floating = value;
        }
        else if constexpr (c_Kind == LbPrintf::EKind::WideText)
        {
            setText<wchar_t>(value);
        }
        else if constexpr (c_Kind == LbPrintf::EKind::NarrowText)
        {
            setText<char>(value);
        }
        else if constexpr (c_Kind == LbPrintf::EKind::Pointer)
        {
            m_address = value;
        }
        else
        {
            m_bits = static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
        }
    }

    const LbPrintf::SArgumentType& GetType() const noexcept { return m_type; }
    /// The value of an integer or character, sign-extended to 64 bits.
    std::uint64_t GetBits() const noexcept { return m_bits; }
    long double GetFloating() const noexcept { return m_floating; }
    /// For pointers and texts.
    const void* GetAddress() const noexcept { return m_address; }
    /// For texts, in code units.
    std::size_t GetLength() const noexcept { return m_length; }

private:
    template<typename Character, typename T>
    void setText(const T& value) noexcept
    {
        if constexpr (std::is_convertible_v<const T&, const Character*>)
        {
            m_address = static_cast<const Character*>(value);
            m_length = sc_ZeroTerminated;
        }
        else
        {
            const std::basic_string_view<Character> text = value;
            m_address = text.data();
            m_length = text.size();
        }
    }

    LbPrintf::SArgumentType m_type;
    std::uint64_t m_bits = 0;
    long double m_floating = 0;
    const void* m_address = nullptr;
    std::size_t m_length = 0;
};

/// A format. A format that can be checked only at run time also has the location where it was created.
class LbFormatSource
{
public:
    /// For a format that the compiler has checked.
    explicit constexpr LbFormatSource(std::wstring_view text) noexcept : m_text(text), m_isChecked(true) {}
    constexpr LbFormatSource(std::wstring_view text, LbSourceLocation place) noexcept : m_text(text), m_place(place) {}

    std::wstring_view GetText() const noexcept { return m_text; }
    /// True if the compiler has checked the format.
    bool IsChecked() const noexcept { return m_isChecked; }
    const LbSourceLocation& GetPlace() const noexcept { return m_place; }

private:
    std::wstring_view m_text;
    LbSourceLocation m_place;
    bool m_isChecked = false;
};

/// A format that is created at run time: Info(LbRuntimeFormat(text), 1). The text must outlive the call.
class LbRuntimeFormat
{
public:
    explicit LbRuntimeFormat(std::wstring_view text, LbSourceLocation place = LbSourceLocation::Current()) noexcept
        : m_source(text, place)
    {
    }
    LbRuntimeFormat(const LbRuntimeFormat&) = delete;
    LbRuntimeFormat& operator=(const LbRuntimeFormat&) = delete;

    const LbFormatSource& GetSource() const noexcept { return m_source; }

private:
    LbFormatSource m_source;
};

/// These functions are never defined. For an invalid format, the compiler reports that one of them is not constexpr.
namespace LbFormatMistake
{
void TheFormatHasMoreConversionsThanArguments();
void TheFormatHasFewerConversionsThanArguments();
void TheFormatHasAnUnknownConversion();
void TheLengthDoesNotFitTheConversion();
void TheWidthOrPrecisionIsTooLarge();
void TheWidthOrPrecisionIsNoInt();
void NarrowTextNeedsTheConversionPercentHs();
void WideTextNeedsTheConversionPercentS();
void TheArgumentDoesNotFitTheConversion();
} // namespace LbFormatMistake

/// A format for arguments of types T: a constant that the compiler has checked, or an LbRuntimeFormat.
template<typename... T>
class LbCheckedFormat
{
public:
    /// From a constant. For an invalid format the compiler error names a function that describes the mistake. A text
    /// that is not a constant needs LbRuntimeFormat.
    template<std::convertible_to<std::wstring_view> S>
    consteval LbCheckedFormat(const S& text) // NOLINT(google-explicit-constructor)
        : m_source(std::wstring_view(text))
    {
        constexpr std::array<LbPrintf::SArgumentType, sizeof...(T)> c_Types = {LbPrintf::GetArgumentType<T>()...};
        refuse(LbPrintf::FindMistake(std::wstring_view(text), c_Types));
    }

    LbCheckedFormat(const LbRuntimeFormat& format) noexcept // NOLINT(google-explicit-constructor)
        : m_source(format.GetSource())
    {
    }

    const LbFormatSource& GetSource() const noexcept { return m_source; }

private:
    static constexpr void refuse(LbPrintf::EMistake mistake)
    {
        switch (mistake)
        {
        case LbPrintf::EMistake::None:
            break;
        case LbPrintf::EMistake::TooFewArguments:
            return LbFormatMistake::TheFormatHasMoreConversionsThanArguments();
        case LbPrintf::EMistake::TooManyArguments:
            return LbFormatMistake::TheFormatHasFewerConversionsThanArguments();
        case LbPrintf::EMistake::UnknownConversion:
            return LbFormatMistake::TheFormatHasAnUnknownConversion();
        case LbPrintf::EMistake::LengthDoesNotFit:
            return LbFormatMistake::TheLengthDoesNotFitTheConversion();
        case LbPrintf::EMistake::CountTooLarge:
            return LbFormatMistake::TheWidthOrPrecisionIsTooLarge();
        case LbPrintf::EMistake::CountIsNoInteger:
            return LbFormatMistake::TheWidthOrPrecisionIsNoInt();
        case LbPrintf::EMistake::NarrowTextNeedsHs:
            return LbFormatMistake::NarrowTextNeedsTheConversionPercentHs();
        case LbPrintf::EMistake::WideTextNeedsS:
            return LbFormatMistake::WideTextNeedsTheConversionPercentS();
        case LbPrintf::EMistake::ArgumentDoesNotFit:
            return LbFormatMistake::TheArgumentDoesNotFitTheConversion();
        }
    }

    // A member, because clang 14 crashes if this is a base class.
    LbFormatSource m_source;
};

/// The format type for a call with arguments of types T.
template<typename... T>
using LbFormatString = LbCheckedFormat<std::type_identity_t<T>...>;

/// Formats packed arguments, whose types must be the ones that the format was checked against. An invalid run-time
/// format throws LbException with the mistake and the format's location. Any thread.
LB_API std::wstring LbFormatArguments(const LbFormatSource& format, std::span<const LbFormatArgument> arguments);

/// Describes the mistake of a run-time format in German, with file and line. Empty for correct formats and for formats
/// that the compiler checked. Any thread.
LB_API std::wstring LbDescribeFormatMistake(const LbFormatSource& format, std::span<const LbFormatArgument> arguments);

/// Formats a line of output. For an invalid run-time format, returns a line with "Fehler: " and a description of the
/// mistake instead of throwing. Any thread.
LB_API std::wstring LbFormatLine(const LbFormatSource& format, std::span<const LbFormatArgument> arguments);

template<typename... T>
std::array<LbFormatArgument, sizeof...(T)> LbPackArguments(const T&... arguments) noexcept
{
    return {LbFormatArgument(arguments)...};
}

/// Formats `arguments` as described above; throws like LbFormatArguments. Any thread.
template<typename... T>
std::wstring LbFormat(LbFormatString<T...> format, const T&... arguments)
{
    return LbFormatArguments(format.GetSource(), LbPackArguments(arguments...));
}

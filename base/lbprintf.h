/// Parses and checks formats of wide printf, at compile time and at run time.
///
/// Include lbformat.h instead, which describes what a format means.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <type_traits>

namespace LbPrintf
{

enum class EKind : std::uint8_t
{
    Signed,
    Unsigned,
    WideCharacter,
    NarrowCharacter,
    Floating,
    WideText,
    NarrowText,
    Pointer,
    Other ///< cannot be printed
};

/// Facts about an argument's type, which determine whether and how the argument prints.
struct SArgumentType
{
    EKind kind = EKind::Other;
    /// In bytes, for numbers and characters.
    std::size_t size = 0;
    /// True if %p can print its address; also for texts passed as pointers.
    bool isPointer = false;
};

/// A mistake in a format, or in its arguments.
enum class EMistake : std::uint8_t
{
    None,
    TooFewArguments,
    TooManyArguments,
    UnknownConversion,
    LengthDoesNotFit,
    CountTooLarge,
    CountIsNoInteger,
    NarrowTextNeedsHs, ///< narrow text passed to a conversion for wide text
    WideTextNeedsS,    ///< wide text passed to a conversion for narrow text
    ArgumentDoesNotFit
};

enum class ELength : std::uint8_t
{
    None,
    Char,       ///< hh
    Short,      ///< h
    Long,       ///< l
    Wide,       ///< w
    LongDouble, ///< L
    Integer     ///< ll, j, z, t, I, I32, I64: the argument's type determines the width
};

/// The largest width and precision. The messages of a case hold no longer line.
inline constexpr std::int64_t c_LargestCount = 1'048'575;

/// One conversion of a format, from its percent sign to its letter.
struct SConversion
{
    static constexpr std::int64_t sc_NoPrecision = -1;

    bool left = false;
    bool zero = false;
    bool plus = false;
    bool blank = false;
    bool alternate = false;
    bool hasWidthArgument = false;
    bool hasPrecisionArgument = false;
    ELength length = ELength::None;
    std::int64_t width = 0;
    std::int64_t precision = sc_NoPrecision;
    wchar_t type = 0; ///< "%" for a percent sign

    constexpr bool IsOneOf(std::wstring_view types) const { return types.find(type) != std::wstring_view::npos; }

    /// The part of the width that `used` characters leave free.
    constexpr std::size_t GetPadding(std::size_t used) const
    {
        const auto wanted = static_cast<std::size_t>(width);
        return wanted > used ? wanted - used : 0;
    }

    /// For characters and texts: l and w select wide ones, h narrow ones; %C and %S without a length are narrow.
    constexpr bool IsWide() const
    {
        return length == ELength::None ? type == L's' || type == L'c' : length != ELength::Short;
    }
};

/// Splits a format, from left to right, into alternating texts and conversions.
class CParser
{
public:
    explicit constexpr CParser(std::wstring_view format) : m_rest(format) {}

    constexpr bool IsAtEnd() const { return m_rest.empty(); }

    /// The text up to the next conversion or the end.
    constexpr std::wstring_view TakeText()
    {
        const std::wstring_view text = m_rest.substr(0, m_rest.find(L'%'));
        m_rest.remove_prefix(text.size());
        return text;
    }

    /// Reads the conversion at which TakeText has stopped.
    constexpr EMistake TakeConversion(SConversion& conversion)
    {
        m_rest.remove_prefix(1);
        if (take(L'%'))
        {
            conversion.type = L'%';
            return EMistake::None;
        }
        while (takeFlag(conversion))
        {
        }
        conversion.hasWidthArgument = take(L'*');
        bool areCountsGood = conversion.hasWidthArgument || takeCount(conversion.width);
        if (take(L'.'))
        {
            conversion.precision = 0;
            conversion.hasPrecisionArgument = take(L'*');
            areCountsGood = (conversion.hasPrecisionArgument || takeCount(conversion.precision)) && areCountsGood;
        }
        conversion.length = takeLength();
        conversion.type = peek();
        if (conversion.type == 0 || !conversion.IsOneOf(L"diouxXeEfFgGaAcCsSp"))
        {
            return EMistake::UnknownConversion;
        }
        m_rest.remove_prefix(1);
        return !areCountsGood            ? EMistake::CountTooLarge
               : !isLengthOf(conversion) ? EMistake::LengthDoesNotFit
                                         : EMistake::None;
    }

private:
    constexpr wchar_t peek() const { return m_rest.empty() ? L'\0' : m_rest.front(); }

    constexpr bool take(wchar_t character)
    {
        const bool isNext = !m_rest.empty() && m_rest.front() == character;
        m_rest.remove_prefix(isNext ? 1 : 0);
        return isNext;
    }

    constexpr bool take(std::wstring_view mark)
    {
        const bool isNext = m_rest.starts_with(mark);
        m_rest.remove_prefix(isNext ? mark.size() : 0);
        return isNext;
    }

    constexpr bool takeFlag(SConversion& conversion)
    {
        return takeFlag(L'-', conversion.left) || takeFlag(L'0', conversion.zero) || takeFlag(L'+', conversion.plus) ||
               takeFlag(L' ', conversion.blank) || takeFlag(L'#', conversion.alternate);
    }

    constexpr bool takeFlag(wchar_t character, bool& flag)
    {
        const bool isNext = take(character);
        flag = flag || isNext;
        return isNext;
    }

    /// Returns false if the number is larger than c_LargestCount.
    constexpr bool takeCount(std::int64_t& count)
    {
        for (; peek() >= L'0' && peek() <= L'9'; m_rest.remove_prefix(1))
        {
            // The number stops growing above the limit, so that it cannot overflow.
            count = count > c_LargestCount ? count : count * 10 + (peek() - L'0');
        }
        return count <= c_LargestCount;
    }

    constexpr ELength takeLength()
    {
        struct SMark
        {
            std::wstring_view text;
            ELength length;
        };
        // The first match wins, so a longer mark comes before each mark with which it begins.
        constexpr SMark c_Marks[] = {
            {L"hh", ELength::Char},     {L"h", ELength::Short},   {L"ll", ELength::Integer},
            {L"l", ELength::Long},      {L"w", ELength::Wide},    {L"j", ELength::Integer},
            {L"z", ELength::Integer},   {L"t", ELength::Integer}, {L"I32", ELength::Integer},
            {L"I64", ELength::Integer}, {L"I", ELength::Integer}, {L"L", ELength::LongDouble},
        };
        for (const SMark& mark : c_Marks)
        {
            if (take(mark.text))
            {
                return mark.length;
            }
        }
        return ELength::None;
    }

    static constexpr bool isLengthOf(const SConversion& conversion)
    {
        const ELength length = conversion.length;
        if (length == ELength::None)
        {
            return true;
        }
        if (conversion.IsOneOf(L"cCsS"))
        {
            return length == ELength::Short || length == ELength::Long || length == ELength::Wide;
        }
        if (conversion.IsOneOf(L"eEfFgGaA"))
        {
            return length == ELength::Long || length == ELength::LongDouble;
        }
        return conversion.type != L'p' && length != ELength::Wide;
    }

    std::wstring_view m_rest;
};

/// True for integers of up to 32 bits, which C passes as int.
constexpr bool IsIntOrSmaller(const SArgumentType& argument)
{
    return (argument.kind == EKind::Signed || argument.kind == EKind::Unsigned) &&
           argument.size <= sizeof(std::int32_t);
}

constexpr bool Accepts(const SConversion& conversion, const SArgumentType& argument)
{
    const bool isCharacter = argument.kind == EKind::WideCharacter || argument.kind == EKind::NarrowCharacter;
    switch (conversion.type)
    {
    case L's':
    case L'S':
        return argument.kind == (conversion.IsWide() ? EKind::WideText : EKind::NarrowText);
    case L'c':
    case L'C':
        return isCharacter || IsIntOrSmaller(argument);
    case L'p':
        return argument.isPointer;
    default:
        return conversion.IsOneOf(L"diouxX")
                   ? isCharacter || argument.kind == EKind::Signed || argument.kind == EKind::Unsigned
                   : argument.kind == EKind::Floating;
    }
}

/// Precondition: the conversion does not accept the argument.
constexpr EMistake GetArgumentMistake(const SConversion& conversion, const SArgumentType& argument)
{
    if (conversion.IsOneOf(L"sS") && argument.kind == EKind::NarrowText)
    {
        return EMistake::NarrowTextNeedsHs;
    }
    return conversion.IsOneOf(L"sS") && argument.kind == EKind::WideText ? EMistake::WideTextNeedsS
                                                                         : EMistake::ArgumentDoesNotFit;
}

/// The first mistake of a format with arguments of these types.
constexpr EMistake FindMistake(std::wstring_view format, std::span<const SArgumentType> arguments)
{
    CParser parser(format);
    for (parser.TakeText(); !parser.IsAtEnd(); parser.TakeText())
    {
        SConversion conversion;
        if (const EMistake mistake = parser.TakeConversion(conversion); mistake != EMistake::None)
        {
            return mistake;
        }
        for (const bool isCount : {conversion.hasWidthArgument, conversion.hasPrecisionArgument})
        {
            if (isCount && !arguments.empty() && !IsIntOrSmaller(arguments.front()))
            {
                return EMistake::CountIsNoInteger;
            }
            if (isCount && arguments.empty())
            {
                return EMistake::TooFewArguments;
            }
            arguments = arguments.subspan(isCount ? 1 : 0);
        }
        if (conversion.type == L'%')
        {
            continue;
        }
        if (arguments.empty())
        {
            return EMistake::TooFewArguments;
        }
        if (!Accepts(conversion, arguments.front()))
        {
            return GetArgumentMistake(conversion, arguments.front());
        }
        arguments = arguments.subspan(1);
    }
    return arguments.empty() ? EMistake::None : EMistake::TooManyArguments;
}

template<typename T>
constexpr EKind GetNumberKind()
{
    if constexpr (std::is_same_v<T, wchar_t>)
    {
        return EKind::WideCharacter;
    }
    else if constexpr (std::is_same_v<T, char>)
    {
        return EKind::NarrowCharacter;
    }
    else if constexpr (std::is_floating_point_v<T>)
    {
        return EKind::Floating;
    }
    else if constexpr (sizeof(T) > sizeof(std::uint64_t))
    {
        return EKind::Other;
    }
    else
    {
        return std::is_signed_v<T> ? EKind::Signed : EKind::Unsigned;
    }
}

/// How an argument of type T prints. Enumerations print as their numbers, classes as the text that they convert to.
template<typename T>
constexpr SArgumentType GetArgumentType()
{
    using Value = std::decay_t<T>;
    constexpr bool isPointer = std::is_pointer_v<Value> || std::is_null_pointer_v<Value>;
    if constexpr (std::is_enum_v<Value>)
    {
        return GetArgumentType<std::underlying_type_t<Value>>();
    }
    else if constexpr (std::is_arithmetic_v<Value> || std::integral<Value>)
    {
        return {GetNumberKind<Value>(), sizeof(Value), false};
    }
    else if constexpr (std::is_null_pointer_v<Value>)
    {
        return {EKind::Pointer, sizeof(void*), true};
    }
    else if constexpr (std::is_convertible_v<const T&, const wchar_t*> ||
                       std::is_convertible_v<const T&, std::wstring_view>)
    {
        return {EKind::WideText, 0, isPointer};
    }
    else if constexpr (std::is_convertible_v<const T&, const char*> ||
                       std::is_convertible_v<const T&, std::string_view>)
    {
        return {EKind::NarrowText, 0, isPointer};
    }
    else
    {
        constexpr bool isAddress = std::is_convertible_v<const T&, const void*>;
        return {isAddress ? EKind::Pointer : EKind::Other, sizeof(void*), isAddress};
    }
}

} // namespace LbPrintf

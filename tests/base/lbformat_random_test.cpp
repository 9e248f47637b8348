/// Compares random conversions with those of the C library, if both define them equally, and with those of other
/// platforms.
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <initializer_list>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbformat.h"

namespace
{

/// C libraries with a 32-bit wchar_t print wide text with "%ls", so they can be the reference. Other C libraries define
/// the conversions of text differently.
constexpr bool c_HasReference = sizeof(wchar_t) == 4;
constexpr std::size_t c_CallCount = 10'000;
/// Large enough for the longest long double, padded to its width.
constexpr std::size_t c_BufferSize = 8192;

/// One conversion with its width and precision.
struct SSample
{
    std::wstring format;
    std::wstring reference; ///< the equivalent conversion for the C library
    std::vector<int> counts;
};

class CRandomCalls
{
public:
    /// Formats a random value with a random conversion; returns the text and, if available, the C library's text.
    std::array<std::wstring, 2> Call()
    {
        switch (take(6))
        {
        case 0:
            return call(makeSample(L"-+ 0#", pick({L"", L"h", L"hh"}), pick({L"d", L"i", L"o", L"u", L"x", L"X"})),
                        static_cast<int>(takeInteger()));
        case 1:
            return call(makeSample(L"-+ 0#", pick({L"ll", L"j"}), pick({L"d", L"i", L"o", L"u", L"x", L"X"})),
                        static_cast<long long>(takeInteger()));
        case 2:
            return call(makeSample(L"-+ 0#", pick({L"", L"l"}), takeFloatingType()), takeDouble());
        case 3:
            return call(makeSample(L"-+ 0#", L"L", takeFloatingType()), takeLongDouble());
        case 4:
            return callWithText();
        default:
            return callWithCharacter();
        }
    }

private:
    std::uint64_t take(std::uint64_t limit) { return m_random() % limit; }
    bool takeOneOf(std::uint64_t count) { return take(count) == 0; }

    std::wstring pick(std::initializer_list<const wchar_t*> choices) { return choices.begin()[take(choices.size())]; }

    std::wstring takeFloatingType() { return pick({L"f", L"F", L"e", L"E", L"g", L"G", L"a", L"A"}); }

    /// Makes short and long numbers, positive and negative.
    std::uint64_t takeInteger()
    {
        return (m_random() >> take(64)) * (takeOneOf(2) ? 1 : static_cast<std::uint64_t>(-1));
    }

    double takeDouble()
    {
        switch (take(4))
        {
        case 0:
            return static_cast<double>(static_cast<std::int64_t>(takeInteger())) / 8;
        case 1:
            return static_cast<double>(take(20'000)) / 100 - 100;
        case 2:
            return pickSpecial<double>();
        default:
            double value = 0;
            const std::uint64_t bits = m_random();
            std::memcpy(&value, &bits, sizeof(value));
            return value;
        }
    }

    long double takeLongDouble()
    {
        if (takeOneOf(4))
        {
            return pickSpecial<long double>();
        }
        const auto mantissa = static_cast<long double>(m_random());
        const int exponent = takeOneOf(4) ? static_cast<int>(take(32'000)) - 16'000 : static_cast<int>(take(120)) - 120;
        return std::ldexp(takeOneOf(2) ? mantissa : -mantissa, exponent);
    }

    template<typename T>
    T pickSpecial()
    {
        const std::array<T, 8> specials = {T{0},
                                           -T{0},
                                           T{1},
                                           std::numeric_limits<T>::infinity(),
                                           -std::numeric_limits<T>::infinity(),
                                           std::numeric_limits<T>::max(),
                                           std::numeric_limits<T>::min(),
                                           std::numeric_limits<T>::denorm_min()};
        return specials[take(specials.size())];
    }

    SSample makeSample(std::wstring_view flags, const std::wstring& length, const std::wstring& type)
    {
        return makeSample(flags, length + type, length + type, 50);
    }

    SSample makeSample(std::wstring_view flags, const std::wstring& end, const std::wstring& referenceEnd, int largest)
    {
        SSample sample;
        std::wstring& text = sample.format = L"<%";
        for (const wchar_t flag : flags)
        {
            text.append(takeOneOf(3) ? 1 : 0, flag);
        }
        addCount(sample, L"", takeOneOf(8) ? -largest : 1, largest);
        if (takeOneOf(2))
        {
            addCount(sample, L".", takeOneOf(8) ? -3 : 0, takeOneOf(8) ? largest : 9);
        }
        sample.reference = text + referenceEnd + L">";
        text += end + L">";
        return sample;
    }

    /// Adds `mark`, and then nothing, or digits, or "*" for a count that is passed as an argument.
    void addCount(SSample& sample, std::wstring_view mark, int smallest, int largest)
    {
        sample.format += mark;
        int count = smallest + static_cast<int>(take(static_cast<std::uint64_t>(largest - smallest)));
        // A width of 0 would be read as a flag.
        count = count == 0 && mark.empty() ? 1 : count;
        switch (take(3))
        {
        case 0:
            break;
        case 1:
            sample.format += std::to_wstring(std::abs(count));
            break;
        default:
            sample.format += L"*";
            sample.counts.push_back(count);
            break;
        }
    }

    std::array<std::wstring, 2> callWithText()
    {
        const bool isWide = takeOneOf(2);
        const std::wstring type = isWide ? pick({L"s", L"ls", L"ws", L"lS"}) : pick({L"S", L"hs", L"hS"});
        const SSample sample = makeSample(L"-", type, isWide ? L"ls" : L"s", 20);
        if (isWide)
        {
            std::wstring text;
            for (std::uint64_t count = take(20); count > 0; --count)
            {
                text += pick({L"a", L"ß", L"€", L"\U0001F600", L" "});
            }
            return call(sample, text.c_str());
        }
        // Only ASCII, because the C library decodes narrow text by the locale, which is "C" here.
        std::string text;
        for (std::uint64_t count = take(20); count > 0; --count)
        {
            text += static_cast<char>('!' + take(90));
        }
        return call(sample, text.c_str());
    }

    std::array<std::wstring, 2> callWithCharacter()
    {
        const bool isWide = takeOneOf(2);
        const std::wstring type = isWide ? pick({L"c", L"lc", L"wc", L"lC"}) : pick({L"C", L"hc", L"hC"});
        const SSample sample = makeSample(L"-", type, isWide ? L"lc" : L"c", 20);
        return isWide ? call(sample, static_cast<wchar_t>('!' + take(0xD000)))
                      : call(sample, static_cast<char>('!' + take(90)));
    }

    template<typename T>
    std::array<std::wstring, 2> call(const SSample& sample, T value)
    {
        std::vector<LbFormatArgument> arguments;
        for (const int& count : sample.counts)
        {
            arguments.emplace_back(count);
        }
        arguments.emplace_back(value);
        const LbRuntimeFormat format(sample.format);
        return {LbFormatArguments(format.GetSource(), arguments), c_HasReference ? callReference(sample, value) : L""};
    }

    template<typename T>
    static std::wstring callReference(const SSample& sample, T value)
    {
        std::wstring buffer(c_BufferSize, L'\0');
        int length = -1;
        const wchar_t* format = sample.reference.c_str();
        switch (sample.counts.size())
        {
        case 0:
            length = std::swprintf(buffer.data(), buffer.size(), format, value);
            break;
        case 1:
            length = std::swprintf(buffer.data(), buffer.size(), format, sample.counts[0], value);
            break;
        default:
            length = std::swprintf(buffer.data(), buffer.size(), format, sample.counts[0], sample.counts[1], value);
            break;
        }
        return length < 0 ? L"failed" : buffer.substr(0, static_cast<std::size_t>(length));
    }

    std::mt19937_64 m_random{20'240'503};
};

TEST(LbFormatRandom, PrintsTheSameTextAsTheCLibrary)
{
    if (!c_HasReference)
    {
        GTEST_SKIP() << "the C library's wide printf behaves differently here";
    }
    CRandomCalls calls;
    for (std::size_t call = 0; call < c_CallCount; ++call)
    {
        const auto [text, reference] = calls.Call();
        ASSERT_EQ(text, reference) << "call " << call;
    }
}

TEST(LbFormatRandom, PrintsTheSameTextOnAllPlatforms)
{
    constexpr std::uint64_t c_Prime = 0x100000001B3;
    std::uint64_t checksum = 0xCBF29CE484222325;
    CRandomCalls calls;
    for (std::size_t call = 0; call < c_CallCount; ++call)
    {
        for (const char byte : LbEncoding::ToUtf8(calls.Call()[0]))
        {
            checksum = (checksum ^ static_cast<unsigned char>(byte)) * c_Prime;
        }
    }
    EXPECT_EQ(checksum, 17841489662782123305U);
}

} // namespace

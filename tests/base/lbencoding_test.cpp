#include "base/lbencoding.h"

#include <cstdint>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace
{

using namespace std::string_view_literals;

/// The text of one code point, in the platform's wide encoding.
std::wstring wide(char32_t codePoint)
{
    if (sizeof(wchar_t) > 2 || codePoint <= 0xFFFF)
    {
        return {static_cast<wchar_t>(codePoint)};
    }
    const char32_t offset = codePoint - 0x10000;
    return {static_cast<wchar_t>(0xD800 + (offset >> 10U)), static_cast<wchar_t>(0xDC00 + (offset & 0x3FFU))};
}

struct SSample
{
    char32_t codePoint;
    std::string_view utf8;
};

constexpr SSample c_Samples[] = {
    {0x00, "\0"sv},
    {0x41, "A"},
    {0x7F, "\x7F"},
    {0x80, "\xC2\x80"},
    {0xE4, "\xC3\xA4"},
    {0x7FF, "\xDF\xBF"},
    {0x800, "\xE0\xA0\x80"},
    {0x20AC, "\xE2\x82\xAC"},
    {0xD7FF, "\xED\x9F\xBF"},
    {0xE000, "\xEE\x80\x80"},
    {0xFFFF, "\xEF\xBF\xBF"},
    {0x10000, "\xF0\x90\x80\x80"},
    {0x1F600, "\xF0\x9F\x98\x80"},
    {0x10FFFF, "\xF4\x8F\xBF\xBF"},
};

/// Byte sequences in which every byte is invalid as UTF-8.
constexpr std::string_view c_InvalidUtf8[] = {
    "\x80",             // continuation byte without a lead byte
    "\xC0\xAF",         // two bytes for a one-byte character
    "\xE0\x80\xAF",     // three bytes for a one-byte character
    "\xF0\x80\x80\xAF", // four bytes for a one-byte character
    "\xED\xA0\x80",     // surrogate
    "\xF4\x90\x80\x80", // above the last code point
    "\xF8\x88\x80\x80\x80",
    "\xFF",
    "\xE2\x82", // truncated
};

TEST(LbEncoding, EncodesUtf8SequencesOfEveryLength)
{
    for (const SSample& sample : c_Samples)
    {
        EXPECT_EQ(LbEncoding::ToUtf8(wide(sample.codePoint)), sample.utf8)
            << static_cast<std::uint32_t>(sample.codePoint);
    }
}

TEST(LbEncoding, DecodesUtf8SequencesOfEveryLength)
{
    for (const SSample& sample : c_Samples)
    {
        EXPECT_EQ(LbEncoding::FromUtf8(sample.utf8), wide(sample.codePoint))
            << static_cast<std::uint32_t>(sample.codePoint);
    }
}

TEST(LbEncoding, ConvertsNonAsciiCharactersWithinText)
{
    EXPECT_EQ(LbEncoding::ToUtf8(L"Prüfung: 5 €"), "Pr\xC3\xBC"
                                                   "fung: 5 \xE2\x82\xAC");
    EXPECT_EQ(LbEncoding::FromUtf8("Pr\xC3\xBC"
                                   "fung: 5 \xE2\x82\xAC"),
              L"Prüfung: 5 €");
}

TEST(LbEncoding, ConvertsEmptyTexts)
{
    EXPECT_EQ(LbEncoding::ToUtf8(L""), "");
    EXPECT_EQ(LbEncoding::FromUtf8(""), L"");
    EXPECT_TRUE(LbEncoding::IsUtf8(""));
}

TEST(LbEncoding, ReplacesLoneSurrogatesInUtf8)
{
    EXPECT_EQ(LbEncoding::ToUtf8(L"a" + wide(0xD800) + L"b"), "a\xEF\xBF\xBD"
                                                              "b");
    EXPECT_EQ(LbEncoding::ToUtf8(wide(0xDC80)), "\xEF\xBF\xBD");
    EXPECT_EQ(LbEncoding::ToUtf8(L"x" + wide(0xDBFF)), "x\xEF\xBF\xBD");
}

TEST(LbEncoding, ReplacesEachByteOfInvalidUtf8)
{
    for (const std::string_view bytes : c_InvalidUtf8)
    {
        EXPECT_EQ(LbEncoding::FromUtf8(bytes), std::wstring(bytes.size(), L'\xFFFD'));
    }
}

TEST(LbEncoding, RecognisesValidUtf8)
{
    for (const SSample& sample : c_Samples)
    {
        EXPECT_TRUE(LbEncoding::IsUtf8(sample.utf8));
    }
    for (const std::string_view bytes : c_InvalidUtf8)
    {
        EXPECT_FALSE(LbEncoding::IsUtf8(bytes));
        EXPECT_FALSE(LbEncoding::IsUtf8("text " + std::string(bytes) + " text"));
    }
}

TEST(LbEncoding, KeepsInvalidByteSequencesOfNativeText)
{
    for (const std::string_view bytes : c_InvalidUtf8)
    {
        const std::string name = "\xC3\xA4" + std::string(bytes) + "z\xF0\x9F\x98\x80";
        EXPECT_EQ(LbEncoding::ToNative(LbEncoding::FromNative(name)), name);
    }
}

TEST(LbEncoding, MapsInvalidNativeBytesToLoneSurrogates)
{
    EXPECT_EQ(LbEncoding::FromNative("a\xFF"), L"a" + wide(0xDCFF));
    EXPECT_EQ(LbEncoding::FromNative("\x80z"), wide(0xDC80) + L"z");
}

TEST(LbEncoding, ReplacesLoneSurrogatesThatStandForNoNativeByte)
{
    EXPECT_EQ(LbEncoding::ToNative(wide(0xD800)), "\xEF\xBF\xBD");
    EXPECT_EQ(LbEncoding::ToNative(wide(0xDC7F)), "\xEF\xBF\xBD");
    EXPECT_EQ(LbEncoding::ToNative(wide(0xDD00)), "\xEF\xBF\xBD");
}

TEST(LbEncoding, DecodesNativeTextIntoReusedMemory)
{
    std::wstring result = L"something longer from before";
    LbEncoding::FromNative("ab", result);
    EXPECT_EQ(result, L"ab");
    LbEncoding::FromNative("\xC3\xA4", result);
    EXPECT_EQ(result, L"ä");
}

TEST(LbEncoding, ConvertsUtf16BothWays)
{
    EXPECT_EQ(LbEncoding::ToUtf16(L"ä" + wide(0x1F600)), u"ä\U0001F600");
    EXPECT_EQ(LbEncoding::FromUtf16(u"ä\U0001F600"), L"ä" + wide(0x1F600));
}

TEST(LbEncoding, KeepsLoneSurrogatesInUtf16)
{
    const std::u16string units = {u'a', char16_t{0xDC00}, char16_t{0xD800}, u'b'};
    const std::wstring text = L"a" + wide(0xDC00) + wide(0xD800) + L"b";
    EXPECT_EQ(LbEncoding::FromUtf16(units), text);
    EXPECT_EQ(LbEncoding::ToUtf16(text), units);
}

TEST(LbEncoding, WritesOneByteForEachLatin1Character)
{
    EXPECT_EQ(LbEncoding::ToLatin1(L"Größe\u00FF"), "Gr\xF6\xDF"
                                                    "e\xFF");
}

TEST(LbEncoding, ReplacesCharactersOutsideLatin1)
{
    EXPECT_EQ(LbEncoding::ToLatin1(L"5 € \u0100"), "5 ? ?");
    EXPECT_EQ(LbEncoding::ToLatin1(wide(0x1F600) + L"|" + wide(0xD800)), "?|?");
}

TEST(LbEncoding, ReplacesControlCharactersInLatin1)
{
    EXPECT_EQ(LbEncoding::ToLatin1(L"\t\n\r"), "\t\n\r");
    EXPECT_EQ(LbEncoding::ToLatin1(std::wstring(L"\0\x01\x08\x0B\x1F ", 6)), "????? ");
    EXPECT_EQ(LbEncoding::ToLatin1(L"~\u007F\u0080\u0085\u009F\u00A0"), "~????\xA0");
}

TEST(LbEncoding, ReadsEveryLatin1Byte)
{
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
    {
        bytes.push_back(static_cast<char>(byte));
    }
    const std::wstring text = LbEncoding::FromLatin1(bytes);
    ASSERT_EQ(text.size(), 256U);
    for (std::size_t index = 0; index < 256; ++index)
    {
        EXPECT_EQ(text[index], static_cast<wchar_t>(index));
    }
}

TEST(LbEncodingLatin1ToUtf8, EqualsTheConversionThroughWideText)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
    {
        all.push_back(static_cast<char>(byte));
    }
    for (const std::string& bytes : {std::string(), std::string("nur ASCII"), all, std::string("\xE4"), "a\xFF" + all})
    {
        EXPECT_EQ(LbEncoding::Latin1ToUtf8(bytes), LbEncoding::ToUtf8(LbEncoding::FromLatin1(bytes)));
    }
}

} // namespace

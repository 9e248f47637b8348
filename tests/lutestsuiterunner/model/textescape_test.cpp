#include "testing/lutestsuiterunner/model/textescape.h"

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "tests/lutestsuiterunner/samplerun.h"

namespace
{

using Runner::FromEscapedUtf8;
using Runner::ToEscapedUtf8;

TEST(RunnerTextEscape, LeavesOrdinaryTextAsItIs)
{
    EXPECT_EQ(ToEscapedUtf8(L"Prüfung\t{1}\r\n€"), "Prüfung\t{1}\r\n€");
    EXPECT_EQ(FromEscapedUtf8("Prüfung\t{1}\r\n€"), L"Prüfung\t{1}\r\n€");
}

TEST(RunnerTextEscape, EscapesCharactersThatXmlForbids)
{
    using namespace std::string_literals;

    EXPECT_EQ(ToEscapedUtf8(L"a\0b\x1b\xfffe"s), "a␛{0000}b␛{001B}␛{FFFE}");
    EXPECT_EQ(FromEscapedUtf8("a␛{0000}b␛{001B}␛{FFFE}"), L"a\0b\x1b\xfffe"s);
}

TEST(RunnerTextEscape, EscapesLoneSurrogatesAndTheEscapeCharacter)
{
    const std::wstring text = {L'\xD83D', L'x', L'\xDC80', L'\x241B'};

    EXPECT_EQ(ToEscapedUtf8(text), "␛{D83D}x␛{DC80}␛{241B}");
    EXPECT_EQ(FromEscapedUtf8(ToEscapedUtf8(text)), text);
}

TEST(RunnerTextEscape, KeepsCharactersBeyondTheBasicPlane)
{
    EXPECT_EQ(ToEscapedUtf8(L"\U0001F600"), "\U0001F600");
    EXPECT_EQ(FromEscapedUtf8("\U0001F600"), L"\U0001F600");
}

TEST(RunnerTextEscape, KeepsTextThatOnlyResemblesAnEscape)
{
    for (const char* const text : {"␛", "␛{", "␛{12}", "␛{00G0}", "␛{0000", "␛{123456789}", "␛␛{}"})
    {
        EXPECT_EQ(FromEscapedUtf8(text), LbEncoding::FromUtf8(text)) << text;
    }
}

TEST(RunnerTextEscape, IsReversibleForAnyText)
{
    std::mt19937 random(1);
    for (int round = 0; round < 20000; ++round)
    {
        const std::wstring text = MakeRandomText(random, 12);
        const std::string escaped = ToEscapedUtf8(text);

        ASSERT_TRUE(LbEncoding::IsUtf8(escaped));
        ASSERT_EQ(FromEscapedUtf8(escaped), text) << escaped;
    }
}

} // namespace

#include "testing/lutestsuite/lutestsuiteout.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/capturedoutput.h"

namespace
{

using testing::ElementsAre;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

/// The standard output since CaptureStdout, with line feeds on all platforms.
std::string GetConsoleText()
{
    std::string text = GetCapturedStdout();
    std::erase(text, '\r');
    return text;
}

TEST(LuTestSuiteOut, FormatsWideText)
{
    const CapturedOutput output;

    LuTestSuiteOut::Write(L"%s/%S: %d von %u, %.2f%%\n", L"größer", "schmal", -3, 7U, 12.5);

    EXPECT_EQ(output.GetText(), L"größer/schmal: -3 von 7, 12.50%\n");
}

TEST(LuTestSuiteOut, AcceptsRuntimeFormats)
{
    const CapturedOutput output;
    const std::wstring format = L"%*d\n";

    LuTestSuiteOut::Write(LbRuntimeFormat(format), 4, 7);

    EXPECT_EQ(output.GetText(), L"   7\n");
}

TEST(LuTestSuiteOut, NamesThePlaceOfAMistakeInARuntimeFormat)
{
    const CapturedOutput output;
    const std::wstring format = L"50% fertig";

    LuTestSuiteOut::Write(LbRuntimeFormat(format));

    EXPECT_EQ(output.GetText(), L"Fehler: out_test.cpp, Zeile " + std::to_wstring(__LINE__ - 2) +
                                    L": Formattext mit Fehler (zu wenige Argumente): \"50% fertig\"\n");
}

TEST(LuTestSuiteOut, HasNoAttributesAtFirst)
{
    const CapturedOutput output;

    const LuTestSuiteOut line = LuTestSuiteOut::Write(L"einfach");

    EXPECT_EQ(line.GetText(), L"einfach");
    EXPECT_FALSE(line.IsBold());
    EXPECT_FALSE(line.IsUnderlined());
    EXPECT_FALSE(line.HasColor());
    EXPECT_EQ(line.GetColor().GetValue(), 0xFFFFFFFFU);
}

TEST(LuTestSuiteOut, ChainsItsAttributes)
{
    const CapturedOutput output;
    LuTestSuiteOut line = LuTestSuiteOut::Write(L"geschmückt");

    LuTestSuiteOut& result = line.Bold().Underlined().Color(LuColor::c_RED);

    EXPECT_EQ(&result, &line);
    EXPECT_TRUE(line.IsBold());
    EXPECT_TRUE(line.IsUnderlined());
    EXPECT_TRUE(line.HasColor());
    EXPECT_EQ(line.GetColor(), LuColor::c_RED);
}

TEST(LuTestSuiteOut, SetsEachAttributeIndependently)
{
    CapturedOutput output;

    LuTestSuiteOut::Write(L"fett").Bold();
    LuTestSuiteOut::Write(L"unterstrichen").Underlined();
    LuTestSuiteOut::Write(L"blau").Color(LuColor::c_BLUE);

    EXPECT_THAT(output.GetLines(), ElementsAre(CapturedOutput::Bold(L"fett"),
                                               CapturedOutput::SLine{L"unterstrichen", false, true, false, LuColor()},
                                               CapturedOutput::Colored(L"blau", LuColor::c_BLUE)));
}

TEST(LuTestSuiteOut, DistinguishesAColourOfAllBitsFromNoColour)
{
    CapturedOutput output;

    LuTestSuiteOut::Write(L"weiß").Color(LuColor(0xFFFFFFFFU));

    EXPECT_THAT(output.GetLines(), ElementsAre(CapturedOutput::Colored(L"weiß", LuColor(0xFFFFFFFFU))));
}

TEST(LuTestSuiteOut, IsEmittedByItsDestruction)
{
    const CapturedOutput output;
    {
        const LuTestSuiteOut line = LuTestSuiteOut::Write(L"später");
        EXPECT_EQ(output.GetText(), L"");
    }
    EXPECT_EQ(output.GetText(), L"später");
}

TEST(LuTestSuiteOut, IsEmittedOnceAsATemporary)
{
    const CapturedOutput output;

    LuTestSuiteOut::Write(L"einmal").Bold().Underlined().Color(LuColor::c_GREEN);

    EXPECT_EQ(output.GetLines().size(), 1U);
}

TEST(LuTestSuiteOut, IsEmittedByEachCopy)
{
    const CapturedOutput output;
    {
        LuTestSuiteOut line = LuTestSuiteOut::Write(L"doppelt");
        line.Bold().Underlined().Color(LuColor::c_DARKBLUE);
        const LuTestSuiteOut copy(line);
    }
    const CapturedOutput::SLine expected{L"doppelt", true, true, true, LuColor::c_DARKBLUE};
    EXPECT_THAT(output.GetLines(), ElementsAre(expected, expected));
}

TEST(LuTestSuiteOut, AssignsAllFields)
{
    const CapturedOutput output;
    {
        LuTestSuiteOut target = LuTestSuiteOut::Write(L"alt");
        LuTestSuiteOut source = LuTestSuiteOut::Write(L"neu");
        source.Bold().Underlined().Color(LuColor::c_GRAY);
        target = source;
    }
    const CapturedOutput::SLine expected{L"neu", true, true, true, LuColor::c_GRAY};
    EXPECT_THAT(output.GetLines(), ElementsAre(expected, expected));
}

TEST(LuTestSuiteOut, AddsNoLineFeeds)
{
    CaptureStdout();

    LuTestSuiteOut::Write(L"Anfang");
    LuTestSuiteOut::Write(L", Ende\n\n");

    EXPECT_EQ(GetConsoleText(), "Anfang, Ende\n\n");
}

TEST(LuTestSuiteOut, WritesUtf8ToTheConsole)
{
    CaptureStdout();

    LuTestSuiteOut::Write(L"\u00E4\u00D6\u00DF \u20AC\n");

    EXPECT_EQ(GetConsoleText(), "\xC3\xA4\xC3\x96\xC3\x9F \xE2\x82\xAC\n");
}

TEST(LuTestSuiteOut, WritesPercentSignsOfTheTextUnchanged)
{
    CaptureStdout();

    LuTestSuiteOut::Write(L"%s", L"100%s %d %n\n");

    EXPECT_EQ(GetConsoleText(), "100%s %d %n\n");
}

TEST(LuTestSuiteOut, WritesLongLinesWhole)
{
    const std::string text(200'000, 'x');
    CaptureStdout();

    LuTestSuiteOut::Write(L"%S", text);

    EXPECT_EQ(GetConsoleText(), text);
}

TEST(LuTestSuiteOut, RendersNoAttributesOnTheConsole)
{
    CaptureStdout();

    LuTestSuiteOut::Write(L"rot\n").Bold().Underlined().Color(LuColor::c_RED);

    EXPECT_EQ(GetConsoleText(), "rot\n");
}

TEST(LuTestSuiteOut, WritesNothingToADisabledConsole)
{
    CaptureStdout();
    LuTestSuiteOut::SetConsoleOut(false);

    LuTestSuiteOut::Write(L"unsichtbar\n");
    LuTestSuiteOut::SetConsoleOut(true);
    LuTestSuiteOut::Write(L"sichtbar\n");

    EXPECT_EQ(GetConsoleText(), "sichtbar\n");
}

TEST(LuTestSuiteOut, ReachesCustomOutputsBesideTheConsole)
{
    const CapturedOutput output;
    CaptureStdout();
    LuTestSuiteOut::SetConsoleOut(true);

    LuTestSuiteOut::Write(L"beide\n");
    LuTestSuiteOut::SetConsoleOut(false);

    EXPECT_EQ(GetConsoleText(), "beide\n");
    EXPECT_EQ(output.GetText(), L"beide\n");
}

/// An output that tests switch on. Its objects exist until the process ends, because custom outputs cannot be removed.
class CSwitchedOut : public LuTestSuiteOut::LuCustomOut
{
public:
    void Output(const LuTestSuiteOut& line) override
    {
        if (s_log != nullptr)
        {
            *s_log += m_name + line.GetText();
            if (m_throws)
            {
                throw std::runtime_error("custom output");
            }
        }
    }

    /// Makes all outputs write to `log`. The first call registers them: A, which throws, then B, then A again.
    static void WriteTo(std::wstring* log)
    {
        static CSwitchedOut& first = *new CSwitchedOut(L"A", true);
        static CSwitchedOut& second = *new CSwitchedOut(L"B", false);
        static const bool s_isRegistered = [] {
            LuTestSuiteOut::AddCustomOut(&first);
            LuTestSuiteOut::AddCustomOut(&second);
            LuTestSuiteOut::AddCustomOut(&first);
            return true;
        }();
        s_log = s_isRegistered ? log : nullptr;
    }

private:
    CSwitchedOut(std::wstring name, bool throws) : m_name(std::move(name)), m_throws(throws) {}

    static std::wstring* s_log;
    std::wstring m_name;
    bool m_throws;
};

std::wstring* CSwitchedOut::s_log = nullptr;

TEST(LuTestSuiteOut, CallsCustomOutputsOncePerRegistrationInOrder)
{
    const CapturedOutput output;
    std::wstring log;
    CSwitchedOut::WriteTo(&log);

    LuTestSuiteOut::Write(L"1");
    LuTestSuiteOut::Write(L"2");
    CSwitchedOut::WriteTo(nullptr);

    EXPECT_EQ(log, L"A1B1A1A2B2A2");
}

TEST(LuTestSuiteOut, ContinuesAfterACustomOutputThrows)
{
    const CapturedOutput output;
    std::wstring log;
    CSwitchedOut::WriteTo(&log);

    EXPECT_NO_THROW(LuTestSuiteOut::Write(L"!"));
    CSwitchedOut::WriteTo(nullptr);

    EXPECT_EQ(log, L"A!B!A!");
}

TEST(LuColor, DefinesTheColoursOfTheOutput)
{
    EXPECT_EQ(LuColor::c_GRAY, LuColor(128, 128, 128));
    EXPECT_EQ(LuColor::c_RED, LuColor(255, 0, 0));
    EXPECT_EQ(LuColor::c_GREEN, LuColor(0, 128, 0));
    EXPECT_EQ(LuColor::c_BLUE, LuColor(0, 0, 255));
    EXPECT_EQ(LuColor::c_DARKBLUE, LuColor(0, 0, 139));
    EXPECT_EQ(LuColor::c_GOLDENROD, LuColor(218, 165, 32));
}

} // namespace

// Readers of values in configuration and description files.

#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "base/xmlnode.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/fields.h"

namespace
{

constexpr std::uint32_t c_Untouched = 4711;

/// The root element of a text.
class CElement
{
public:
    explicit CElement(const std::string& xml)
    {
        EXPECT_EQ(m_document.LoadText(xml, "Wert"), XMLDocument::EResult::Ok) << xml;
    }

    XMLNode Get() const { return m_document.GetRoot(); }

private:
    XMLDocument m_document;
};

std::string MakeElement(const std::string& text)
{
    return "<Wert>" + text + "</Wert>";
}

bool ReadBool(const std::string& text, bool value)
{
    LuTestSuiteUtils::GetBool(CElement(MakeElement(text)).Get(), value);
    return value;
}

std::uint32_t ReadUInt32(const std::string& text)
{
    std::uint32_t value = c_Untouched;
    LuTestSuiteUtils::GetUInt32(CElement(MakeElement(text)).Get(), value);
    return value;
}

std::uint64_t ReadUInt64(const std::string& text)
{
    std::uint64_t value = c_Untouched;
    LuTestSuiteUtils::GetUInt64(CElement(MakeElement(text)).Get(), value);
    return value;
}

TEST(GetBool, ReadsTrueAndFalse)
{
    EXPECT_TRUE(ReadBool("true", false));
    EXPECT_FALSE(ReadBool("false", true));
}

TEST(GetBool, KeepsTheValueForAnyOtherText)
{
    for (const char* text :
         {"TRUE", "FALSE", "True", "False", " true", "true ", "false\n", "1", "0", "", " ", "falsch"})
    {
        EXPECT_TRUE(ReadBool(text, true)) << text;
        EXPECT_FALSE(ReadBool(text, false)) << text;
    }
}

TEST(GetBool, KeepsTheValueWithoutAnElement)
{
    bool value = true;
    LuTestSuiteUtils::GetBool(XMLNode(), value);
    EXPECT_TRUE(value);
}

TEST(GetUInt32, ReadsDecimalNumbers)
{
    EXPECT_EQ(ReadUInt32("0"), 0U);
    EXPECT_EQ(ReadUInt32("42"), 42U);
    EXPECT_EQ(ReadUInt32("0042"), 42U);
    EXPECT_EQ(ReadUInt32("4294967295"), 4294967295U);
}

TEST(GetUInt32, SkipsLeadingWhiteSpace)
{
    EXPECT_EQ(ReadUInt32(" \t\n 42"), 42U);
}

TEST(GetUInt32, StopsAtTheFirstNonDigit)
{
    EXPECT_EQ(ReadUInt32("42abc"), 42U);
    EXPECT_EQ(ReadUInt32("42.9"), 42U);
    EXPECT_EQ(ReadUInt32("0x20"), 0U);
}

TEST(GetUInt32, ReadsLettersAsZero)
{
    EXPECT_EQ(ReadUInt32("viele"), 0U);
}

TEST(GetUInt32, ClampsATooLargeNumber)
{
    EXPECT_EQ(ReadUInt32("4294967296"), 4294967295U);
    EXPECT_EQ(ReadUInt32("99999999999999999999999"), 4294967295U);
}

TEST(GetUInt32, KeepsTheValueWithoutText)
{
    EXPECT_EQ(ReadUInt32(""), c_Untouched);

    std::uint32_t value = c_Untouched;
    LuTestSuiteUtils::GetUInt32(CElement("<Wert/>").Get(), value);
    LuTestSuiteUtils::GetUInt32(XMLNode(), value);
    EXPECT_EQ(value, c_Untouched);
}

TEST(GetUInt64, ReadsDecimalNumbers)
{
    EXPECT_EQ(ReadUInt64("4294967296"), 4294967296U);
    EXPECT_EQ(ReadUInt64("18446744073709551615"), std::numeric_limits<std::uint64_t>::max());
}

TEST(GetUInt64, ReadsNumbersLenientlyLikeGetUInt32)
{
    EXPECT_EQ(ReadUInt64("\n 42abc"), 42U);
    EXPECT_EQ(ReadUInt64("viele"), 0U);
    EXPECT_EQ(ReadUInt64("99999999999999999999999"), std::numeric_limits<std::uint64_t>::max());
}

TEST(GetUInt64, KeepsTheValueWithoutText)
{
    EXPECT_EQ(ReadUInt64(""), c_Untouched);

    std::uint64_t value = c_Untouched;
    LuTestSuiteUtils::GetUInt64(XMLNode(), value);
    EXPECT_EQ(value, c_Untouched);
}

struct SKeyCase
{
    const char* element;
    const char* change;
};

class GetRunParam : public testing::TestWithParam<SKeyCase>
{
};

TEST_P(GetRunParam, ReadsOneKeyIntoOneField)
{
    LuTestSuiteRun::SParams params;

    LuTestSuiteUtils::GetRunParam(CElement(MakeElement(GetParam().element)).Get(), params);

    EXPECT_EQ(GetChangedFields(params), Fields{GetParam().change});
}

INSTANTIATE_TEST_SUITE_P(All, GetRunParam,
                         testing::Values(SKeyCase{"<TrackHeap>true</TrackHeap>", "trackHeap=true"},
                                         SKeyCase{"<DumpHeap>true</DumpHeap>", "dumpHeap=true"},
                                         SKeyCase{"<External>true</External>", "external=true"},
                                         SKeyCase{"<ExternalRelease>true</ExternalRelease>", "external=true"},
                                         SKeyCase{"<Isolated>true</Isolated>", "isolated=true"},
                                         SKeyCase{"<AssertDialog>false</AssertDialog>", "assertDialog=false"},
                                         SKeyCase{"<Verbose>true</Verbose>", "verbose=true"},
                                         SKeyCase{"<DEVerboseOutput>true</DEVerboseOutput>", "deVerboseOutput=true"},
                                         SKeyCase{"<DEDebuggingSerialization>true</DEDebuggingSerialization>",
                                                  "deDebuggingSerialization=true"},
                                         SKeyCase{"<DEPredefinedBreakPoints>true</DEPredefinedBreakPoints>",
                                                  "dePredefinedBreakPoints=true"},
                                         SKeyCase{"<Parallel>true</Parallel>", "parallel=true"},
                                         SKeyCase{"<ThreadCount>16</ThreadCount>", "workerThreads=16"},
                                         SKeyCase{"<RepetitionCount>2</RepetitionCount>", "repetitions=2"},
                                         SKeyCase{"<TimeOutSec>60</TimeOutSec>", "timeOutSec=60"},
                                         SKeyCase{"<TestCaseMax>9</TestCaseMax>", "testCaseMax=9"}));

TEST(GetRunParamOfANode, KeepsFieldsWithoutAnElement)
{
    LuTestSuiteRun::SParams params;
    params.verbose = true;
    params.timeOutSec = 12;
    const Fields before = GetFields(params);

    LuTestSuiteUtils::GetRunParam(CElement(MakeElement("<Unbekannt>true</Unbekannt><verbose>false</verbose>")).Get(),
                                  params);

    EXPECT_EQ(GetFields(params), before);
}

TEST(GetRunParamOfANode, KeepsFieldsWithUnreadableText)
{
    LuTestSuiteRun::SParams params;
    params.trackHeap = true;
    params.repetitions = 3;
    const Fields before = GetFields(params);

    LuTestSuiteUtils::GetRunParam(
        CElement(MakeElement("<TrackHeap>False</TrackHeap><RepetitionCount></RepetitionCount>")).Get(), params);

    EXPECT_EQ(GetFields(params), before);
}

TEST(GetRunParamOfANode, ChangesNothingWithoutANode)
{
    LuTestSuiteRun::SParams params;

    LuTestSuiteUtils::GetRunParam(XMLNode(), params);

    EXPECT_EQ(GetFields(params), GetFields(LuTestSuiteRun::SParams()));
}

TEST(GetRunParamOfANode, IgnoresBreakNumbersAndRepetitionsGiven)
{
    LuTestSuiteRun::SParams params;

    LuTestSuiteUtils::GetRunParam(
        CElement(MakeElement("<BreakAllocID>1</BreakAllocID><BreakAllocSize>2</BreakAllocSize>"
                             "<RepetitionsGiven>true</RepetitionsGiven>"))
            .Get(),
        params);

    EXPECT_EQ(GetFields(params), GetFields(LuTestSuiteRun::SParams()));
}

} // namespace

// Description files of unit tests.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/lbpath.h"
#include "base/luunittest.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/deepstacks.h"
#include "tests/support/scopedfolder.h"

namespace
{

class CScanDescribed : public LuUnitTest
{
    LB_RTTI(CScanDescribed)
    void InitSubtests() override
    {
        for (const wchar_t* name : {L"eins", L"zwei", L"eins.txt", L"a+b", L"aab", L"level\uFF08\u65E7\uFF09.txt"})
        {
            AddSubtest(name, [] {});
        }
    }
};

/// Two of its names are too long for some expressions.
class CScanHugeNames : public LuUnitTest
{
    LB_RTTI(CScanHugeNames)
    void InitSubtests() override
    {
        AddSubtest(std::wstring(800'000, L'a'), [] {});
        AddSubtest(L"kurz", [] {});
        AddSubtest(std::wstring(800'001, L'a'), [] {});
    }
};

class CScanLongName : public LuUnitTest
{
    LB_RTTI(CScanLongName)
    void InitSubtests() override
    {
        AddSubtest(L"kurz", [] {});
        AddSubtest(std::wstring(200'000, L'a'), [] {});
    }
};

} // namespace

LB_RTTI_CLASS(CScanDescribed, LuUnitTest)
LB_RTTI_CLASS(CScanHugeNames, LuUnitTest)
LB_RTTI_CLASS(CScanLongName, LuUnitTest)

namespace
{

using LuTestSuite::ParameterMap;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

class DescriptionFile : public testing::Test
{
protected:
    DescriptionFile() { m_folder.MakeFolder(L"CScanDescribed"); }

    /// The unit test with this description, including disabled cases.
    LuTestSuite::SUnitTest Read(const std::string& bytes)
    {
        m_file = m_folder.WriteFile(L"CScanDescribed/#ExtraInfo.xml", bytes);
        return LuTestSuiteUtils::ScanDirectoryForUnitTests(m_folder.GetPath(), false).at(0);
    }

    LuTestSuite::SUnitTest ReadElements(const std::string& elements)
    {
        return Read("<ExtraInfo>" + elements + "</ExtraInfo>");
    }

    /// The names of the cases that get parameters because they match an element with these attributes.
    std::vector<std::wstring> GetMatchedCases(const std::string& testCaseAttributes)
    {
        std::vector<std::wstring> names;
        const std::string element = "<TestCase " + testCaseAttributes + "><Parallel>true</Parallel></TestCase>";
        for (const LuTestSuite::STestCase& testCase : ReadElements(element).cases)
        {
            if (!testCase.parameters.empty())
            {
                names.push_back(testCase.name);
            }
        }
        return names;
    }

    /// The parameters that a case gets from these elements.
    ParameterMap ReadParameters(const std::string& parameters)
    {
        return ReadElements("<TestCase name='zwei'>" + parameters + "</TestCase>").cases.at(1).parameters;
    }

    /// The names of the cases without the disabled ones.
    std::vector<std::wstring> GetEnabledCases(const std::string& elements)
    {
        ReadElements(elements);
        std::vector<std::wstring> names;
        for (const auto& test : LuTestSuiteUtils::ScanDirectoryForUnitTests(m_folder.GetPath(), true))
        {
            for (const LuTestSuite::STestCase& testCase : test.cases)
            {
                names.push_back(testCase.name);
            }
        }
        return names;
    }

    /// Expects one warning: the text `before`, the path of the file, and the text `after`.
    void ExpectWarning(const std::wstring& before, const std::wstring& after) const
    {
        EXPECT_THAT(m_output.GetLines(),
                    ElementsAre(CapturedOutput::BoldColored(before + m_file + after, LuColor::c_GOLDENROD)));
    }

    CapturedOutput m_output;
    ScopedFolder m_folder;
    std::wstring m_file;
};

TEST_F(DescriptionFile, MayBeMissing)
{
    const auto tests = LuTestSuiteUtils::ScanDirectoryForUnitTests(m_folder.GetPath(), true);

    EXPECT_EQ(tests.at(0).cases.size(), 6U);
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(DescriptionFile, NamesContactsInFileOrder)
{
    const auto contacts = ReadElements("<Contact role='Entwicklung'><Name>Anna Müller</Name>"
                                       "<Email>anna@example.org</Email></Contact>"
                                       "<TestCase name='*'/>"
                                       "<Contact role='Test'><Email>b@example.org</Email><Name>Bert</Name></Contact>")
                              .contacts;

    ASSERT_EQ(contacts.size(), 2U);
    EXPECT_EQ(contacts[0].name, L"Anna Müller");
    EXPECT_EQ(contacts[0].email, L"anna@example.org");
    EXPECT_EQ(contacts[0].role, L"Entwicklung");
    EXPECT_EQ(contacts[1].name, L"Bert");
    EXPECT_EQ(contacts[1].email, L"b@example.org");
    EXPECT_EQ(contacts[1].role, L"Test");
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(DescriptionFile, LeavesMissingContactFieldsEmpty)
{
    const auto contacts = ReadElements("<Contact/>").contacts;

    ASSERT_EQ(contacts.size(), 1U);
    EXPECT_EQ(contacts[0].name + contacts[0].email + contacts[0].role, L"");
}

TEST_F(DescriptionFile, AppliesAStarToEveryCase)
{
    EXPECT_EQ(GetMatchedCases("name='*'").size(), 6U);
}

TEST_F(DescriptionFile, MatchesWholeNames)
{
    EXPECT_THAT(GetMatchedCases("name='eins'"), ElementsAre(L"eins"));
    EXPECT_THAT(GetMatchedCases("name='ein'"), IsEmpty());
    EXPECT_THAT(GetMatchedCases("name='ins'"), IsEmpty());
    EXPECT_THAT(GetMatchedCases("name='EINS'"), IsEmpty());
}

TEST_F(DescriptionFile, MatchesWildcards)
{
    EXPECT_THAT(GetMatchedCases("name='eins*'"), ElementsAre(L"eins", L"eins.txt"));
    EXPECT_THAT(GetMatchedCases("name='?w?i'"), ElementsAre(L"zwei"));
    EXPECT_THAT(GetMatchedCases("name='a+b'"), ElementsAre(L"a+b"));
    EXPECT_THAT(GetMatchedCases("name='a{2}b'"), ElementsAre(L"aab"));
}

TEST_F(DescriptionFile, MatchesNoCaseWithoutAName)
{
    EXPECT_THAT(GetMatchedCases(""), IsEmpty());
}

TEST_F(DescriptionFile, WarnsOfANameThatIsNoValidExpression)
{
    EXPECT_THAT(GetMatchedCases("name='a{x}'"), IsEmpty());
    ExpectWarning(L"Warnung XML '", L"': Ungültiger Name 'a{x}'.\n");
}

TEST_F(DescriptionFile, AppliesElementsOfTheBuildConfigurationOnly)
{
    const std::wstring text = LuTestSuiteUtils::GetBuildConfiguration();
    const std::string own(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(text.find(L' ')));
    ASSERT_TRUE(own == "Debug" || own == "Release") << own;
    const std::string other = own == "Debug" ? "Release" : "Debug";

    EXPECT_EQ(GetMatchedCases("name='*' configuration='" + own + "'").size(), 6U);
    EXPECT_THAT(GetMatchedCases("name='*' configuration='" + other + "'"), IsEmpty());
    EXPECT_THAT(GetMatchedCases("name='*' configuration=''"), IsEmpty());
    EXPECT_THAT(GetMatchedCases("name='*' configuration='" + own + " x64'"), IsEmpty());
}

TEST_F(DescriptionFile, StoresEveryParameterUnderItsName)
{
    const ParameterMap parameters =
        ReadParameters("<Enable>true</Enable><ReportMemLeak>false</ReportMemLeak><TimeOutSec>30</TimeOutSec>"
                       "<MessageReportMax>4294967295</MessageReportMax><Parallel>true</Parallel>"
                       "<External>false</External><Isolated>true</Isolated>");

    EXPECT_THAT(parameters, UnorderedElementsAre(
                                Pair(L"Enable", LbVariant(true)), Pair(L"ReportMemLeak", LbVariant(false)),
                                Pair(L"TimeOutSec", LbVariant(30U)), Pair(L"MessageReportMax", LbVariant(4294967295U)),
                                Pair(L"Parallel", LbVariant(true)), Pair(L"External", LbVariant(false)),
                                Pair(L"Isolated", LbVariant(true))));
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(DescriptionFile, MakesMapsOf128BucketsAndALoadFactorOfOneAndAHalf)
{
    const ParameterMap parameters = ReadParameters("<Enable>true</Enable>");

    EXPECT_GE(parameters.bucket_count(), 128U);
    EXPECT_EQ(parameters.max_load_factor(), 1.5F);
}

TEST_F(DescriptionFile, StoresNullForUnreadableEnableAndReportMemLeak)
{
    const ParameterMap parameters = ReadParameters("<Enable>False</Enable><ReportMemLeak/>");

    EXPECT_THAT(parameters, UnorderedElementsAre(Pair(L"Enable", LbVariant()), Pair(L"ReportMemLeak", LbVariant())));
}

TEST_F(DescriptionFile, ReplacesAnEarlierEnableByNull)
{
    EXPECT_THAT(ReadParameters("<Enable>false</Enable><Enable> false</Enable>"),
                ElementsAre(Pair(L"Enable", LbVariant())));
}

TEST_F(DescriptionFile, ReadsNumbersLeniently)
{
    EXPECT_THAT(ReadParameters("<TimeOutSec> 12abc</TimeOutSec><MessageReportMax>viele</MessageReportMax>"),
                UnorderedElementsAre(Pair(L"TimeOutSec", LbVariant(12U)), Pair(L"MessageReportMax", LbVariant(0U))));
}

TEST_F(DescriptionFile, KeepsEarlierValuesForUnreadableTexts)
{
    EXPECT_THAT(ReadParameters("<External>true</External><External>TRUE</External><TimeOutSec>5</TimeOutSec>"
                               "<TimeOutSec/>"),
                UnorderedElementsAre(Pair(L"External", LbVariant(true)), Pair(L"TimeOutSec", LbVariant(5U))));
}

TEST_F(DescriptionFile, UsesTheValueOfTheLastMatchingElement)
{
    const auto cases = ReadElements("<TestCase name='eins'><TimeOutSec>1</TimeOutSec><Isolated>true</Isolated>"
                                    "</TestCase><TestCase name='*'><TimeOutSec>2</TimeOutSec></TestCase>")
                           .cases;

    EXPECT_THAT(cases.at(0).parameters,
                UnorderedElementsAre(Pair(L"TimeOutSec", LbVariant(2U)), Pair(L"Isolated", LbVariant(true))));
    EXPECT_THAT(cases.at(1).parameters, ElementsAre(Pair(L"TimeOutSec", LbVariant(2U))));
}

TEST_F(DescriptionFile, DisablesCasesWithTheExactTextFalse)
{
    EXPECT_THAT(GetEnabledCases("<TestCase name='*'><Enable>true</Enable></TestCase>"
                                "<TestCase name='eins*'><Enable>false</Enable></TestCase>"
                                "<TestCase name='a*b'><Enable>False</Enable></TestCase>"),
                ElementsAre(L"zwei", L"a+b", L"aab", L"level\uFF08\u65E7\uFF09.txt"));
}

TEST_F(DescriptionFile, LetsALaterElementEnableACaseAgain)
{
    EXPECT_THAT(GetEnabledCases("<TestCase name='*'><Enable>false</Enable></TestCase>"
                                "<TestCase name='zwei'><Enable>true</Enable></TestCase>"),
                ElementsAre(L"zwei"));
}

TEST_F(DescriptionFile, MatchesWideFormsOfOperators)
{
    const std::vector<std::wstring> expected = {L"level\uFF08\u65E7\uFF09.txt"};
    EXPECT_EQ(GetMatchedCases("name='level（旧）.txt'"), expected);
    EXPECT_EQ(GetMatchedCases("name='level（旧）.*'"), expected);
    EXPECT_EQ(GetMatchedCases("name='level（旧）{1}.txt'"), expected);
}

TEST_F(DescriptionFile, WarnsOfASyntaxErrorAndIsIgnored)
{
    const auto test = Read("<ExtraInfo><Contact/><TestCase name='*'><Enable>false</Enable></TestCase>");

    ExpectWarning(L"Warnung: XML-Syntax Fehler in Datei ", L".\n");
    EXPECT_THAT(test.contacts, IsEmpty());
    EXPECT_THAT(test.cases.at(0).parameters, IsEmpty());
}

TEST_F(DescriptionFile, WarnsOfADirectoryInItsPlaceAndKeepsTheUnitTest)
{
    const std::wstring file = LbPath::WithoutSeparator(m_folder.MakeFolder(L"CScanDescribed/#ExtraInfo.xml"));

    const auto tests = LuTestSuiteUtils::ScanDirectoryForUnitTests(m_folder.GetPath(), false);

    EXPECT_THAT(m_output.GetLines(),
                ElementsAre(CapturedOutput::BoldColored(L"Warnung: Datei " + file + L" konnte nicht gelesen werden.\n",
                                                        LuColor::c_GOLDENROD)));
    ASSERT_EQ(tests.size(), 1U);
    EXPECT_EQ(tests[0].cases.size(), 6U);
}

class DescriptionFileLongNames : public DescriptionFile
{
protected:
    /// The names of the enabled cases, cut after four characters.
    std::vector<std::wstring> GetEnabledCases(const std::string& elements,
                                              const std::wstring& className = L"CScanLongName")
    {
        m_file = m_folder.WriteFile(className + L"/#ExtraInfo.xml", "<ExtraInfo>" + elements + "</ExtraInfo>");
        std::vector<std::wstring> names;
        for (const auto& test : LuTestSuiteUtils::ScanDirectoryForUnitTests(m_folder.GetPath(), true))
        {
            for (const LuTestSuite::STestCase& testCase : test.cases)
            {
                if (test.className == className)
                {
                    names.push_back(testCase.name.substr(0, 4));
                }
            }
        }
        return names;
    }
};

std::string MakeElement(const std::string& name)
{
    return "<TestCase name='" + name + "'><Enable>false</Enable></TestCase>";
}

std::string Repeat(const std::string& text, std::size_t count)
{
    std::string repeated;
    for (std::size_t index = 0; index < count; ++index)
    {
        repeated += text;
    }
    return repeated;
}

TEST_F(DescriptionFileLongNames, MatchWildcardsWithManyStars)
{
    EXPECT_THAT(GetEnabledCases(MakeElement(Repeat("*a", 750)) + MakeElement(Repeat("*a", 20) + "*x")),
                ElementsAre(L"kurz"));
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(DescriptionFileLongNames, AnOverlongElementDoesNotAffectOtherElements)
{
    const std::string overlong = Repeat("a{2}{2}", 200'000);

    EXPECT_THAT(GetEnabledCases(MakeElement(overlong) + MakeElement("ku{1}rz")), ElementsAre(L"aaaa"));
    EXPECT_EQ(m_output.GetText(), L"Warnung XML '" + m_file + L"': Regulärer Ausdruck '" +
                                      std::wstring(overlong.begin(), overlong.begin() + 80) + L"...' ist zu groß.\n");
}

TEST_F(DescriptionFileLongNames, AnElementThatExhaustsTheStackWarnsOnceAndAppliesToOtherCases)
{
    if (!c_AllowsDeepStacks)
    {
        GTEST_SKIP() << "AddressSanitizer does not support stacks that deep";
    }
    EXPECT_THAT(GetEnabledCases(MakeElement("*{1}{1}z") + MakeElement("?{1}{1}urz"), L"CScanHugeNames"),
                ElementsAre(L"aaaa", L"aaaa"));
    ExpectWarning(L"Warnung XML '", L"': Regulärer Ausdruck '*{1}{1}z' braucht mehr Stack, als es gibt.\n");
}

TEST_F(DescriptionFile, WarnsOfAWrongRoot)
{
    Read("<extrainfo/>");
    ExpectWarning(L"Warnung: XML-Syntax Fehler in Datei ", L".\n");
}

TEST_F(DescriptionFile, WarnsOfAnUnknownElementAndGoesOn)
{
    const auto test = ReadElements("<contact/><Contact><Name>N</Name></Contact>");

    ExpectWarning(L"Warnung XML '", L"': Unbekanntes Element 'contact'.\n");
    EXPECT_EQ(test.contacts.size(), 1U);
}

TEST_F(DescriptionFile, WarnsOfAnUnknownParameterAndGoesOn)
{
    EXPECT_THAT(ReadParameters("<enable>false</enable><Parallel>false</Parallel>"),
                ElementsAre(Pair(L"Parallel", LbVariant(false))));
    ExpectWarning(L"Warnung XML '", L"': Unbekannter Parameter 'enable'.\n");
}

TEST_F(DescriptionFile, WarnsOfAnUnknownParameterForEachCase)
{
    ReadElements("<TestCase name='eins*'><Unbekannt/></TestCase><TestCase name='keiner'><Fremd/></TestCase>");

    EXPECT_EQ(m_output.GetLines().size(), 2U);
    EXPECT_EQ(m_output.GetText().find(L"Fremd"), std::wstring::npos);
}

TEST_F(DescriptionFile, IsNotADataSet)
{
    EXPECT_THAT(ReadElements("").GetDataSetFiles(), IsEmpty());
}

} // namespace

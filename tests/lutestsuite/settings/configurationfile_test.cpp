// Configuration files and the history of data directories.

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/os/platform.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/fields.h"
#include "tests/support/scopedenvironment.h"
#include "tests/support/scopedfolder.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using SConfigFileData = LuTestSuiteUtils::SConfigFileData;

SConfigFileData ReadConfig(const std::string& bytes)
{
    const ScopedFolder folder;
    SConfigFileData data;
    LuTestSuiteUtils::ReadConfigXML(folder.WriteFile(L"config.xml", bytes), data);
    return data;
}

TEST(SConfigFileData, StartsWithTheDefaults)
{
    EXPECT_THAT(GetFields(SConfigFileData()),
                ElementsAre("DEVerboseOutput=false", "DEDebuggingSerialization=false", "DEPredefinedBreakPoints=false",
                            "ExternalDebug=false", "ExternalRelease=false", "AssertDialog=true", "Isolated=false",
                            "Parallel=false", "ThreadCount=1", "RepetitionCount=1", "HTMLAuto=false", "XMLAuto=false",
                            "OpenReport=true", "TrackHeap=true", "DumpHeap=false", "SelectedFailed=false",
                            "BreakAllocID=18446744073709551615", "BreakAllocSize=18446744073709551615"));
}

struct SSettingCase
{
    const char* key;
    const char* value;
};

class ReadConfigXMLSetting : public testing::TestWithParam<SSettingCase>
{
};

TEST_P(ReadConfigXMLSetting, ChangesItsFieldOnly)
{
    const std::string key = GetParam().key;
    const std::string value = GetParam().value;

    const SConfigFileData data = ReadConfig("<Config><" + key + ">" + value + "</" + key + "></Config>");

    EXPECT_EQ(GetChangedFields(data), Fields{key + "=" + value});
}

INSTANTIATE_TEST_SUITE_P(
    All, ReadConfigXMLSetting,
    testing::Values(SSettingCase{"DEVerboseOutput", "true"}, SSettingCase{"DEDebuggingSerialization", "true"},
                    SSettingCase{"DEPredefinedBreakPoints", "true"}, SSettingCase{"ExternalDebug", "true"},
                    SSettingCase{"ExternalRelease", "true"}, SSettingCase{"AssertDialog", "false"},
                    SSettingCase{"Isolated", "true"}, SSettingCase{"Parallel", "true"},
                    SSettingCase{"ThreadCount", "8"}, SSettingCase{"RepetitionCount", "10"},
                    SSettingCase{"HTMLAuto", "true"}, SSettingCase{"XMLAuto", "true"},
                    SSettingCase{"OpenReport", "false"}, SSettingCase{"TrackHeap", "false"},
                    SSettingCase{"DumpHeap", "true"}, SSettingCase{"SelectedFailed", "true"},
                    SSettingCase{"BreakAllocID", "4294967297"}, SSettingCase{"BreakAllocSize", "4294967298"}));

TEST(ReadConfigXML, ChangesNothingWithoutAFile)
{
    const ScopedFolder folder;
    SConfigFileData data;
    data.ThreadCount = 5;
    data.tests.insert(L"CTest:fall");
    const Fields before = GetFields(data);

    LuTestSuiteUtils::ReadConfigXML(folder.GetPathOf(L"fehlt.xml"), data);

    EXPECT_EQ(GetFields(data), before);
}

TEST(ReadConfigXML, KeepsFieldsWithoutAnElement)
{
    const ScopedFolder folder;
    SConfigFileData data;
    data.Parallel = true;

    LuTestSuiteUtils::ReadConfigXML(folder.WriteFile(L"a.xml", "<Config><ThreadCount>3</ThreadCount></Config>"), data);

    EXPECT_EQ(GetChangedFields(data), (Fields{"Parallel=true", "ThreadCount=3"}));
}

TEST(ReadConfigXML, KeepsABoolWhoseTextIsInCapitals)
{
    const SConfigFileData data = ReadConfig("<Config><Isolated>TRUE</Isolated><OpenReport>FALSE</OpenReport></Config>");

    EXPECT_THAT(GetChangedFields(data), IsEmpty());
}

TEST(ReadConfigXML, ReadsTheLeadingDigitsOfANumber)
{
    const SConfigFileData data =
        ReadConfig("<Config><ThreadCount>12abc</ThreadCount><RepetitionCount>abc</RepetitionCount></Config>");

    EXPECT_EQ(GetChangedFields(data), (Fields{"ThreadCount=12", "RepetitionCount=0"}));
}

TEST(ReadConfigXML, DistinguishesLetterCasesOfElements)
{
    const SConfigFileData data = ReadConfig("<Config><threadcount>7</threadcount><tests><Test name='C'>"
                                            "<Case name='f'/></Test></tests></Config>");

    EXPECT_THAT(GetChangedFields(data), IsEmpty());
}

TEST(ReadConfigXML, ReadsTheHistoryInFileOrder)
{
    const SConfigFileData data = ReadConfig("<Config><DataDirHistory><Dir path='D:\\b\\'/><Anders path='C:\\a'/>"
                                            "<Dir path='D:\\b\\'/></DataDirHistory></Config>");

    EXPECT_THAT(data.dataDirHistory, ElementsAre(L"D:\\b\\", L"C:\\a", L"D:\\b\\"));
}

TEST(ReadConfigXML, ReadsEveryStoredTest)
{
    const SConfigFileData data = ReadConfig("<Config><Tests>"
                                            "<Test name='CErster'><Case name='eins'/><Case name='zwei: 2'/></Test>"
                                            "<Test name='CLeerer'/>"
                                            "<Test name='CZweiter'><Case name='eins'/><Case name='eins'/></Test>"
                                            "</Tests></Config>");

    EXPECT_THAT(data.tests, UnorderedElementsAre(L"CErster:eins", L"CErster:zwei: 2", L"CZweiter:eins"));
}

TEST(ReadConfigXML, AcceptsElementsInAnyOrder)
{
    const SConfigFileData data = ReadConfig("<Config><Tests><T name='C'><F name='f'/></T></Tests>"
                                            "<BreakAllocID>1</BreakAllocID><Isolated>true</Isolated>"
                                            "<DataDirHistory><D path='p'/></DataDirHistory></Config>");

    EXPECT_EQ(GetChangedFields(data), (Fields{"dataDirHistory[]=p", "tests[]=C:f", "Isolated=true", "BreakAllocID=1"}));
}

TEST(ReadConfigXML, ReadsLatin1Text)
{
    const std::string declared = "<?xml version='1.0' encoding='ISO-8859-1'?>";
    const std::string content = "<Config><DataDirHistory><D path='Gr\xF6\xDF"
                                "e'/></DataDirHistory></Config>";

    EXPECT_THAT(ReadConfig(declared + content).dataDirHistory, ElementsAre(L"Gr\u00F6\u00DFe"));
    EXPECT_THAT(ReadConfig(content).dataDirHistory, ElementsAre(L"Gr\u00F6\u00DFe"));
}

class ReadConfigXMLSyntax : public testing::TestWithParam<const char*>
{
};

TEST_P(ReadConfigXMLSyntax, FailsWithoutChangingTheRecord)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"a.xml", GetParam());
    SConfigFileData data;

    try
    {
        LuTestSuiteUtils::ReadConfigXML(file, data);
        FAIL() << "no exception";
    }
    catch (const std::wstring& message)
    {
        EXPECT_EQ(message, L"XML-Syntax Fehler");
    }
    EXPECT_THAT(GetChangedFields(data), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, ReadConfigXMLSyntax,
                         testing::Values("<Config><ThreadCount>3</ThreadCount>", "kein XML", "",
                                         "<Andere><ThreadCount>3</ThreadCount></Andere>",
                                         "<config><ThreadCount>3</ThreadCount></config>"));

TEST(GetDataDirHistory, ReadsLastConfigOfThePerUserFolder)
{
    const ScopedUserFolder user;
    user.WriteLastConfig("<Config><DataDirHistory><D path='neu'/><D path='alt'/></DataDirHistory></Config>");

    EXPECT_THAT(LuTestSuiteUtils::GetDataDirHistory(), ElementsAre(L"neu", L"alt"));
}

TEST(GetDataDirHistory, IsEmptyWithoutAFile)
{
    const ScopedUserFolder user;
    const CapturedOutput output;

    EXPECT_THAT(LuTestSuiteUtils::GetDataDirHistory(), IsEmpty());
    EXPECT_EQ(output.GetText(), L"");
}

TEST(GetDataDirHistory, ReportsABrokenFileInOneLine)
{
    const ScopedUserFolder user;
    user.WriteLastConfig("<Config>");
    const CapturedOutput output;

    EXPECT_THAT(LuTestSuiteUtils::GetDataDirHistory(), IsEmpty());

    EXPECT_THAT(output.GetLines(), ElementsAre(CapturedOutput::BoldColored(
                                       L"Fehler in Config-File: XML-Syntax Fehler\n", LuColor::c_GOLDENROD)));
}

class PreprocessDataDir : public testing::Test
{
protected:
    PreprocessDataDir()
    {
        m_user.WriteLastConfig("<Config><DataDirHistory><D path='erste'/><D path='zweite'/></DataDirHistory></Config>");
    }

    static std::wstring Preprocess(std::wstring path)
    {
        LuTestSuiteUtils::PreprocessDataDir(path);
        return path;
    }

    static std::wstring WithSeparator(const std::wstring& path) { return path + LbOs::c_PathSeparator; }

    ScopedUserFolder m_user;
    ScopedFolder m_folder;
};

TEST_F(PreprocessDataDir, PutsASeparatorAtTheEnd)
{
    const std::wstring path = m_folder.MakeFolder(L"daten");

    EXPECT_EQ(Preprocess(path.substr(0, path.size() - 1)), path);
    EXPECT_EQ(Preprocess(path), path);
}

TEST_F(PreprocessDataDir, LeavesAnEmptyPathEmpty)
{
    EXPECT_EQ(Preprocess(L""), L"");
}

TEST_F(PreprocessDataDir, SelectsAnEntryOfTheHistory)
{
    EXPECT_EQ(Preprocess(L"0"), WithSeparator(L"erste"));
    EXPECT_EQ(Preprocess(L"1"), WithSeparator(L"zweite"));
}

TEST_F(PreprocessDataDir, KeepsANumberWithoutAHistoryEntry)
{
    EXPECT_EQ(Preprocess(L"2"), WithSeparator(L"2"));
    EXPECT_EQ(Preprocess(L"4294967296"), WithSeparator(L"4294967296"));
}

TEST_F(PreprocessDataDir, KeepsAMissingPathThatIsNoNumber)
{
    EXPECT_EQ(Preprocess(L"fehlt"), WithSeparator(L"fehlt"));
    EXPECT_EQ(Preprocess(L"0 und mehr"), WithSeparator(L"0 und mehr"));
}

} // namespace

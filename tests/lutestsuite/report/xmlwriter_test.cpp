#include <string>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/golden.h"
#include "tests/support/os/filelimits.h"
#include "tests/support/samplereports.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/unwritable.h"

namespace
{

using SReportData = LuTestSuiteReport::SReportData;

class XmlReportWriter : public testing::Test
{
protected:
    std::string Write(const SReportData& data) const
    {
        const std::wstring path = m_folder.GetPathOf(L"Report.xml");
        LuTestSuiteReport::GenerateXMLReport(path, data);
        return LbFileSystem::ReadFile8Bit(path);
    }

    /// The lines of one case with this content, from its start tag to its end tag.
    std::string WriteCase(const LuTestSuiteReport::SReportCase& testCase) const
    {
        SReportData data;
        data.Cases.push_back(testCase);
        const std::string text = Write(data);
        const std::size_t start = text.find("\t<testcase");
        return text.substr(start, text.find("</testsuite>") - start);
    }

    ScopedFolder m_folder;
};

TEST_F(XmlReportWriter, WritesEveryFieldInItsPlace)
{
    ExpectGolden("report/full.xml", Write(MakeFullReport()));
}

TEST_F(XmlReportWriter, WritesAnEmptyRecord)
{
    ExpectGolden("report/empty.xml", Write({}));
}

TEST_F(XmlReportWriter, IsSilentOnSuccess)
{
    const CapturedOutput output;
    Write(MakeFullReport());
    EXPECT_EQ(output.GetText(), L"");
}

TEST_F(XmlReportWriter, ReplacesAnOlderReport)
{
    m_folder.WriteFile(L"Report.xml", std::string(100000, 'x'));
    EXPECT_TRUE(Write({}).ends_with("</testsuite>\n"));
}

TEST_F(XmlReportWriter, KeepsTheOlderReportWhenTheDiskIsFull)
{
    const std::string older = Write({});
    const CapturedOutput output;
    {
        const std::shared_ptr<void> limit = LbOs::LimitFileSize(older.size());
        if (!limit)
        {
            GTEST_SKIP() << "the size of files cannot be limited here";
        }
        EXPECT_EQ(Write(MakeFullReport()), older);
    }
    EXPECT_EQ(output.GetText(),
              L"XML-Report " + m_folder.GetPathOf(L"Report.xml") + L" konnte nicht erzeugt werden.\n");
    EXPECT_EQ(LbFileSystem::GetFileNames(m_folder.GetPath()), std::vector<std::wstring>{L"Report.xml"});
}

TEST_F(XmlReportWriter, WritesNothingWithoutAPath)
{
    const CapturedOutput output;
    LuTestSuiteReport::GenerateXMLReport(L"", MakeFullReport());
    EXPECT_EQ(output.GetText(), L"");
}

TEST_F(XmlReportWriter, EscapesNamesOfCasesButNotOfClasses)
{
    LuTestSuiteReport::SReportCase testCase;
    testCase.ClassName = L"CTest<int>";
    testCase.CaseName = L"a < b & c";
    EXPECT_NE(WriteCase(testCase).find("classname=\"CTest<int>\" name=\"a &lt; b &amp; c\""), std::string::npos);
}

TEST_F(XmlReportWriter, WritesAQuestionMarkForCharactersOutsideLatin1)
{
    LuTestSuiteReport::SReportCase testCase;
    testCase.CaseName = L"\u20AC \U0001F600 \x01\x1B\xFF\t";
    EXPECT_NE(WriteCase(testCase).find("name=\"? ? ??\xFF\t\""), std::string::npos);
}

TEST_F(XmlReportWriter, WritesLargeTimeOutsAsNegativeNumbers)
{
    SReportData data;
    data.TimeOut = 4294967295U;
    data.ThreadCount = 4294967295U;
    const std::string text = Write(data);
    EXPECT_NE(text.find("<TimeOut>-1</TimeOut>"), std::string::npos);
    EXPECT_NE(text.find("<ThreadCount>4294967295</ThreadCount>"), std::string::npos);
    data.TimeOut = 4294967294U;
    EXPECT_NE(Write(data).find("<TimeOut>-2</TimeOut>"), std::string::npos);
}

TEST_F(XmlReportWriter, OmitsAbsentBuildRecords)
{
    SReportData data;
    data.BuildConfiguration = L"Release x64";
    EXPECT_NE(Write(data).find("\t<BuildInfo>\n\t\t<BuildConfiguration>Release x64</BuildConfiguration>\n"
                               "\t</BuildInfo>\n"),
              std::string::npos);
}

TEST_F(XmlReportWriter, PrintsOneLineWhenNoReportCanBeWritten)
{
    for (const SUnwritablePlace& place : GetUnwritablePlaces(m_folder, L"Report.xml"))
    {
        const CapturedOutput output;
        LuTestSuiteReport::GenerateXMLReport(place.path, MakeFullReport());
        ASSERT_EQ(output.GetLines().size(), 1U) << place.name;
        EXPECT_EQ(output.GetLines()[0],
                  CapturedOutput::Plain(L"XML-Report " + place.path + L" konnte nicht erzeugt werden.\n"))
            << place.name;
    }
}

} // namespace

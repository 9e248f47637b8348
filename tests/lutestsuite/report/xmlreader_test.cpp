#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lustream.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/hostprocess.h"
#include "tests/support/os/testaids.h"
#include "tests/support/samplereports.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using SReportData = LuTestSuiteReport::SReportData;

class XmlReportReader : public testing::Test
{
protected:
    /// Reads a report whose root element has this content into a record that is not empty.
    SReportData Read(const std::string& content) const
    {
        SReportData data;
        data.GPU = L"alt";
        data.Cases.resize(3);
        EXPECT_TRUE(LuTestSuiteReport::LoadReportDataFromXMLFile(
            m_folder.WriteFile(L"Report.xml", "<testsuite>" + content + "</testsuite>"), data));
        return data;
    }

    SReportData ReadStatistics(const std::string& content) const
    {
        return Read("<Statistics>" + content + "</Statistics>");
    }

    float ReadTime(const std::string& text) const
    {
        return ReadStatistics("<TimeTotal>" + text + "</TimeTotal>").TimeTotal;
    }

    LuTestSuiteReport::SReportCase ReadCase(const std::string& content) const
    {
        SReportData data = Read(content);
        return data.Cases.size() == 1 ? std::move(data.Cases[0]) : LuTestSuiteReport::SReportCase();
    }

    void ExpectBroken(const std::string& bytes) const
    {
        ExpectFailure(m_folder.WriteFile(L"Report.xml", bytes), L"XML-Syntax Fehler");
    }

    static void ExpectFailure(const std::wstring& path, const std::wstring& reason)
    {
        const CapturedOutput output;
        SReportData data;
        data.GPU = L"alt";
        EXPECT_FALSE(LuTestSuiteReport::LoadReportDataFromXMLFile(path, data));
        EXPECT_EQ(output.GetText(), L"Fehler in Config-File: " + reason + L"\n");
        EXPECT_EQ(data.GPU, L"");
    }

    ScopedFolder m_folder;
};

constexpr std::size_t c_ManyCases = 40000;

SReportData makeLargeReport()
{
    SReportData data;
    for (std::uint32_t index = 0; index < c_ManyCases; ++index)
    {
        const bool isGood = index % 10 != 0;
        data.Cases.push_back(MakeReportCase(LbFormat(L"CDeflateVectors%u", index % 300),
                                            LbFormat(L"level %u, größer.vector", index),
                                            isGood ? ECaseRunResult::Ok : ECaseRunResult::Error));
        if (!isGood)
        {
            data.Cases.back().Dumps = {{true, L"3 statt 4 Bytes an der Stelle 17"}, {false, L"Datei gelesen"}};
        }
    }
    return data;
}

TEST_F(XmlReportReader, ResetsTheRecordFirst)
{
    const SReportData data = Read("");

    EXPECT_EQ(data.GPU, L"");
    EXPECT_TRUE(data.Cases.empty());
}

TEST_F(XmlReportReader, FailsSilentlyForAMissingFile)
{
    const CapturedOutput output;
    SReportData data;
    data.GPU = L"alt";

    EXPECT_FALSE(LuTestSuiteReport::LoadReportDataFromXMLFile(m_folder.GetPathOf(L"fehlt.xml"), data));

    EXPECT_EQ(output.GetText(), L"");
    EXPECT_EQ(data.GPU, L"");
}

TEST_F(XmlReportReader, ReadsMissingElementsAsEmptyOrZero)
{
    const SReportData data = Read("<ClassStatistics><Class/></ClassStatistics><testcase/>");

    EXPECT_EQ(data.TimeOut, 0U);
    EXPECT_EQ(data.SvnInfo, nullptr);
    EXPECT_EQ(data.PscmInfo, nullptr);
    ASSERT_EQ(data.Classes.size(), 1U);
    EXPECT_EQ(data.Classes[0].Name, L"");
    EXPECT_EQ(data.Classes[0].Successful, 0U);
    ASSERT_EQ(data.Cases.size(), 1U);
    EXPECT_EQ(data.Cases[0].Time, 0.0F);
    EXPECT_EQ(data.Cases[0].Result, ECaseRunResult::Unknown);
}

TEST_F(XmlReportReader, ReadsABuildRecordOnlyIfItsKeyFieldExists)
{
    EXPECT_EQ(Read("<BuildInfo><SvnRevision>1</SvnRevision></BuildInfo>").SvnInfo, nullptr);
    EXPECT_EQ(Read("<BuildInfo><PscmServer>s</PscmServer></BuildInfo>").PscmInfo, nullptr);
    const SReportData data = Read("<BuildInfo><SvnURL>u</SvnURL><PscmRepository>r</PscmRepository></BuildInfo>");
    ASSERT_NE(data.SvnInfo, nullptr);
    EXPECT_EQ(data.SvnInfo->URL, L"u");
    ASSERT_NE(data.PscmInfo, nullptr);
    EXPECT_EQ(data.PscmInfo->Repository, L"r");
}

TEST_F(XmlReportReader, ComputesTheSuccessfulCasesOfAClass)
{
    const SReportData data = Read("<ClassStatistics><Class Name='C'><CasesTotal>10</CasesTotal><Errors>1</Errors>"
                                  "<Failures>2</Failures></Class></ClassStatistics>");

    EXPECT_EQ(data.Classes.at(0).Successful, 7U);
}

TEST_F(XmlReportReader, ReadsAnUnlimitedTimeOut)
{
    EXPECT_EQ(Read("<RunInfo><TimeOut>-1</TimeOut></RunInfo>").TimeOut, 4294967295U);
}

TEST_F(XmlReportReader, RebuildsTheNoteOfALeak)
{
    EXPECT_EQ(ReadCase("<testcase><memorydelta>-24</memorydelta></testcase>").Info,
              L"Speicherleck von -24 Bytes detektiert.");
    EXPECT_EQ(ReadCase("<testcase><memorydelta>0</memorydelta></testcase>").Info, L"");
}

TEST_F(XmlReportReader, ReadsResultsByTheirExactNames)
{
    EXPECT_EQ(ReadCase("<testcase><result type='TIMEOUT'/></testcase>").Result, ECaseRunResult::TimeOut);
    EXPECT_EQ(ReadCase("<testcase><result type='ok'/></testcase>").Result, ECaseRunResult::Unknown);
    EXPECT_TRUE(ReadCase("<testcase><result warning='true'/></testcase>").Warning);
    EXPECT_FALSE(ReadCase("<testcase><result warning='True'/></testcase>").Warning);
}

TEST_F(XmlReportReader, ReadsLinesOfUnknownKindsAsErrors)
{
    const auto dumps = ReadCase("<testcase><result><dump type='info'>a</dump><dump type='note'>b</dump><other/>"
                                "<dump>c</dump></result></testcase>")
                           .Dumps;

    ASSERT_EQ(dumps.size(), 3U);
    EXPECT_FALSE(dumps[0].IsError);
    EXPECT_TRUE(dumps[1].IsError);
    EXPECT_TRUE(dumps[2].IsError);
    EXPECT_EQ(dumps[2].Text, L"c");
}

TEST_F(XmlReportReader, UnescapesOnlyTheNamesOfCases)
{
    const auto testCase = ReadCase("<testcase classname='C&lt;&#65;' name='a &lt;&amp;&#65;&quot;&apos;&gt;'><result>"
                                   "<dump>a &lt; b &amp;\r\n</dump></result></testcase>");

    EXPECT_EQ(testCase.ClassName, L"C&lt;&#65;");
    EXPECT_EQ(testCase.CaseName, L"a <&&#65;\"'>");
    EXPECT_EQ(testCase.Dumps.at(0).Text, L"a &lt; b &amp;\r\n");
}

TEST_F(XmlReportReader, ReadsCdataSectionsAsText)
{
    const auto dumps = ReadCase("<testcase><result><dump>a &lt; <![CDATA[b < c && d]]> e</dump>"
                                "<dump><!-- <![CDATA[ --></dump></result></testcase>")
                           .Dumps;

    ASSERT_EQ(dumps.size(), 2U);
    EXPECT_EQ(dumps[0].Text, L"a &lt; b &lt; c &amp;&amp; d e");
    EXPECT_EQ(dumps[1].Text, L"");
}

TEST_F(XmlReportReader, IgnoresUnknownElementsAndUsesTheFirstOfEqualElements)
{
    const SReportData data = Read("<x/>text<testcase name='1'/><y><testcase name='2'/></y>"
                                  "<SystemInfo><GPU>a</GPU><GPU>b</GPU></SystemInfo><testcase name='3'/>");

    EXPECT_EQ(data.GPU, L"a");
    ASSERT_EQ(data.Cases.size(), 2U);
    EXPECT_EQ(data.Cases[1].CaseName, L"3");
}

TEST_F(XmlReportReader, ClampsNumbersOutOfRange)
{
    const SReportData data =
        ReadStatistics("<CasesTotal>4294967296</CasesTotal><Errors>99999999999999999999999</Errors>"
                       "<MemoryMax>18446744073709551616</MemoryMax><TimeMax>1e99</TimeMax>"
                       "<TimeMin>-1e99</TimeMin><TimeAvg>1e-99</TimeAvg>");

    EXPECT_EQ(data.CasesTotal, 4294967295U);
    EXPECT_EQ(data.Errors, 4294967295U);
    EXPECT_EQ(data.MemoryMax, 18446744073709551615U);
    EXPECT_EQ(data.TimeMax, std::numeric_limits<float>::max());
    EXPECT_EQ(data.TimeMin, std::numeric_limits<float>::lowest());
    EXPECT_EQ(data.TimeAvg, 0.0F);
    EXPECT_EQ(ReadCase("<testcase><memorydelta>9223372036854775808</memorydelta></testcase>").MemoryDelta,
              9223372036854775807);
    EXPECT_EQ(ReadCase("<testcase><memorydelta>-9223372036854775809</memorydelta></testcase>").MemoryDelta,
              -9223372036854775807 - 1);
}

TEST_F(XmlReportReader, DistinguishesTimesTooSmallFromTimesTooLarge)
{
    const std::string zeros(60, '0');
    for (const std::string& text :
         {std::string("1E-50"), std::string("1e-50"), "0." + zeros + "1", "." + zeros + "1e5", "0." + zeros + "1E+10",
          "1" + zeros + "e-120", std::string("1e-99999999999999999999"), "0.1e-" + zeros + "99"})
    {
        EXPECT_EQ(ReadTime(text), 0.0F) << text;
    }
    for (const std::string& text :
         {std::string("1E50"), std::string("1e+50"), "1" + zeros, "1" + zeros + ".5e-5", "0." + zeros + "1E+120",
          std::string("1e99999999999999999999"), "1" + zeros + "e -120"})
    {
        EXPECT_EQ(ReadTime(text), std::numeric_limits<float>::max()) << text;
        EXPECT_EQ(ReadTime("-" + text), std::numeric_limits<float>::lowest()) << text;
    }
}

TEST_F(XmlReportReader, ReadsTimesAtTheLimitsOfFloat)
{
    EXPECT_EQ(ReadTime("1.5E-3"), 0.0015F);
    EXPECT_EQ(ReadTime("1e-45"), std::numeric_limits<float>::denorm_min());
    EXPECT_EQ(ReadTime("340282346638528859811704183484516925440.000000"), std::numeric_limits<float>::max());
    EXPECT_EQ(ReadTime("1" + std::string(60, '0') + "e-60"), 1.0F);
}

TEST_F(XmlReportReader, AcceptsAPlusOnlyBeforeANumber)
{
    EXPECT_EQ(ReadTime("+5"), 5.0F);
    EXPECT_EQ(ReadTime("+.5"), 0.5F);
    for (const char* text : {"+-5", "-+5", "++5", "+", "+ 5", "- 5", "+e5", "+inf"})
    {
        EXPECT_EQ(ReadTime(text), 0.0F) << text;
    }
}

TEST_F(XmlReportReader, ReadsInfinityNanAndHexadecimalTimesAsZero)
{
    for (const char* text : {"inf", "-inf", "INFINITY", "nan", "-NaN", "nan(7)", "0x1p3"})
    {
        EXPECT_EQ(ReadTime(text), 0.0F) << text;
    }
}

TEST_F(XmlReportReader, ReadsNonNumbersAsZero)
{
    const SReportData data = ReadStatistics("<CasesTotal>viele</CasesTotal><MemoryMax/><TimeMax>,5</TimeMax>"
                                            "<TimeMin> +0.5s</TimeMin>");

    EXPECT_EQ(data.CasesTotal, 0U);
    EXPECT_EQ(data.MemoryMax, 0U);
    EXPECT_EQ(data.TimeMax, 0.0F);
    EXPECT_EQ(data.TimeMin, 0.5F);
}

TEST_F(XmlReportReader, RefusesBrokenMarkup)
{
    for (const char* bytes : {"", "kein XML", "<testsuite>", "<testsuite></testsuite", "<testsuite><a></testsuite>",
                              "<testsuite/><testsuite/>", "<testsuite a></testsuite>", "<testsuite></Testsuite>"})
    {
        ExpectBroken(bytes);
    }
    ExpectBroken(std::string("<testsuite>\0</testsuite>", 24));
}

TEST_F(XmlReportReader, RefusesAWrongRootElement)
{
    ExpectBroken("<testsuites><testsuite/></testsuites>");
    ExpectBroken("<Testsuite/>");
}

TEST_F(XmlReportReader, RefusesPathsThatAreNotFiles)
{
    std::vector<std::wstring> places = {LbPath::WithoutSeparator(m_folder.MakeFolder(L"Ordner.xml"))};
    // A device that never ends.
    const std::wstring device = L"/dev/zero";
    if (LbFileSystem::IsFile(device))
    {
        places.push_back(device);
    }
    // Opening a pipe without a writer would block.
    if (const std::wstring pipe = m_folder.GetPathOf(L"Leitung.xml"); LbOs::MakePipe(pipe))
    {
        places.push_back(pipe);
    }
    for (const std::wstring& place : places)
    {
        ExpectFailure(place, L"Datei " + place + L" konnte nicht gelesen werden");
    }
}

TEST_F(XmlReportReader, NeverExpandsEntitiesOfADocumentType)
{
    std::string text = "<!DOCTYPE testsuite [<!ENTITY a \"0123456789\">";
    for (char name = 'b'; name <= 'p'; ++name)
    {
        text += std::string("<!ENTITY ") + name + " \"";
        for (int count = 0; count < 10; ++count)
        {
            text += std::string("&") + static_cast<char>(name - 1) + ";";
        }
        text += "\">";
    }
    SReportData data;
    const std::wstring path =
        m_folder.WriteFile(L"Report.xml", text + "]><testsuite><SystemInfo><GPU>&p;</GPU></SystemInfo></testsuite>");

    EXPECT_TRUE(LuTestSuiteReport::LoadReportDataFromXMLFile(path, data));
    EXPECT_EQ(data.GPU, L"&p;");
}

TEST_F(XmlReportReader, AcceptsTenThousandNestedElements)
{
    std::string open;
    std::string close;
    for (int level = 0; level < 10000; ++level)
    {
        open += "<a>";
        close += "</a>";
    }

    EXPECT_EQ(Read(open + close + "<testcase/>").Cases.size(), 1U);
    ExpectBroken("<testsuite>" + open);
}

TEST_F(XmlReportReader, NeedsLessMemoryThanSixTimesTheFileSize)
{
    const std::wstring path = m_folder.GetPathOf(L"Report.xml");
    LuTestSuiteReport::GenerateXMLReport(path, makeLargeReport());
    const auto size = static_cast<double>(LuStreamReadBinaryFile(path).GetSize());
    const auto peak = LbOs::MeasurePeakMemory([&path] {
        SReportData data;
        return LuTestSuiteReport::LoadReportDataFromXMLFile(path, data) && data.Cases.size() == c_ManyCases;
    });
    // CanLimitHost is false with sanitizers, which increase memory use.
    if (!peak || !CanLimitHost())
    {
        GTEST_SKIP() << "the memory use of a fork cannot be measured here";
    }
    const double ratio = static_cast<double>(*peak) / size;
    RecordProperty("times_the_file", std::to_string(ratio));
    EXPECT_LT(ratio, 6.0);
    EXPECT_GT(ratio, 1.0) << "the measurement does not even include the file";
}

TEST_F(XmlReportReader, RefusesTwoHundredMegabytesOfUnclosedText)
{
    constexpr std::size_t c_Block = 1 << 20U;
    const std::wstring path = m_folder.GetPathOf(L"Report.xml");
    LuStreamWriteBinaryFile file(path);
    const std::string block(c_Block, 'x');
    file.Write("<testsuite>", 11);
    for (int count = 0; count < 200; ++count)
    {
        file.Write(block.data(), block.size());
    }
    file.Close();

    ExpectFailure(path, L"XML-Syntax Fehler");
}

} // namespace

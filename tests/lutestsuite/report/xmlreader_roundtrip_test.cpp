#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/randomreports.h"
#include "tests/support/samplereports.h"
#include "tests/support/scopedfolder.h"

namespace
{

using SReportData = LuTestSuiteReport::SReportData;

/// Tests that a record stays the same when it is written, read and written again.
class XmlReportRoundTrip : public testing::Test
{
protected:
    std::string Write(const SReportData& data) const
    {
        LuTestSuiteReport::GenerateXMLReport(m_path, data);
        return LbFileSystem::ReadFile8Bit(m_path);
    }

    bool Read(SReportData& data) const { return LuTestSuiteReport::LoadReportDataFromXMLFile(m_path, data); }

    ScopedFolder m_folder;
    std::wstring m_path = m_folder.GetPathOf(L"Report.xml");
};

TEST_F(XmlReportRoundTrip, KeepsEveryFieldOfAFile)
{
    const SReportData written = MakeFullReport();
    const std::string first = Write(written);
    SReportData data;
    ASSERT_TRUE(Read(data));

    EXPECT_EQ(Write(data), first);
    EXPECT_EQ(data.Classes.at(0).Successful, written.Classes.at(0).Successful);
    EXPECT_EQ(data.Cases.back().Info, written.Cases.back().Info);
    EXPECT_EQ(data.ClassesFlagged, 0U) << "files do not contain this count";
}

TEST_F(XmlReportRoundTrip, WritesTheSameBytesForRandomRecords)
{
    constexpr unsigned c_Records = 300;
    for (unsigned seed = 0; seed < c_Records; ++seed)
    {
        std::mt19937 random(seed);
        const std::string first = Write(MakeRandomReport(random));
        SReportData data;
        ASSERT_TRUE(Read(data)) << "seed " << seed;
        ASSERT_EQ(Write(data), first) << "seed " << seed;
    }
}

/// Damages a report at a few random positions.
std::string damage(std::string bytes, std::mt19937& random)
{
    static constexpr const char* c_Pieces[] = {"<",
                                               ">",
                                               "&",
                                               "\"",
                                               "<!--",
                                               "-->",
                                               "<![CDATA[",
                                               "]]>",
                                               "&lt;",
                                               "\x01",
                                               "\xC3",
                                               "-",
                                               "99999999999999999999",
                                               "<testcase>",
                                               "</testcase>",
                                               "<!DOCTYPE",
                                               ""};
    std::uniform_int_distribution<std::size_t> count(1, 4);
    std::uniform_int_distribution<std::size_t> piece(0, std::size(c_Pieces) - 1);
    for (std::size_t rest = count(random); rest > 0; --rest)
    {
        const std::size_t place = std::uniform_int_distribution<std::size_t>(0, bytes.size() - 1)(random);
        bytes.replace(place, count(random), c_Pieces[piece(random)]);
    }
    return bytes;
}

TEST_F(XmlReportRoundTrip, IsStableAfterReadingADamagedReportOnce)
{
    constexpr unsigned c_Reports = 500;
    unsigned readable = 0;
    const CapturedOutput output;
    for (unsigned seed = 0; seed < c_Reports; ++seed)
    {
        std::mt19937 random(seed);
        m_folder.WriteFile(L"Report.xml", damage(Write(MakeRandomReport(random)), random));
        SReportData data;
        if (!Read(data))
        {
            continue;
        }
        // A text that was read may contain damaged markup. The report that it is written to can then be unreadable.
        const std::string first = Write(data);
        SReportData again;
        if (Read(again))
        {
            ++readable;
            ASSERT_EQ(Write(again), first) << "seed " << seed;
        }
    }
    // Most damage makes a report unreadable; some does not.
    EXPECT_GE(readable, 35U);
    EXPECT_LE(readable, 50U);
}

/// Positions in the texts of elements without children.
std::vector<std::size_t> findTexts(const std::string& bytes)
{
    std::vector<std::size_t> places;
    for (std::size_t end = bytes.find("</"); end != std::string::npos; end = bytes.find("</", end + 1))
    {
        const std::size_t start = bytes.rfind('<', end - 1);
        if (bytes[start + 1] != '/')
        {
            const std::size_t text = bytes.find('>', start) + 1;
            places.push_back(text);
            places.push_back(text + (end - text) / 2);
            places.push_back(end);
        }
    }
    return places;
}

/// Adds texts to a report. The writer never produces these texts, but any reader must accept them.
std::string addForeign(std::string bytes, std::mt19937& random)
{
    static constexpr const char* c_Pieces[] = {"<!-- <x> -->",
                                               "<![CDATA[a < b && c]]>",
                                               "<neu a='1'>x</neu>",
                                               "]]>",
                                               "&unbekannt;",
                                               "&#60;&lt;",
                                               "& ",
                                               "\x01\x85",
                                               "-",
                                               "99999999999999999999",
                                               "<?was auch?>",
                                               "\r\n"};
    for (std::size_t rest = 1 + random() % 4; rest > 0; --rest)
    {
        const std::vector<std::size_t> places = findTexts(bytes);
        bytes.insert(places[random() % places.size()], c_Pieces[random() % std::size(c_Pieces)]);
    }
    return bytes;
}

TEST_F(XmlReportRoundTrip, IsStableAfterReadingAReportWithForeignTextsOnce)
{
    constexpr unsigned c_Reports = 300;
    for (unsigned seed = 0; seed < c_Reports; ++seed)
    {
        std::mt19937 random(seed);
        m_folder.WriteFile(L"Report.xml", addForeign(Write(MakeRandomReport(random)), random));
        SReportData data;
        ASSERT_TRUE(Read(data)) << "seed " << seed;
        const std::string first = Write(data);
        SReportData again;
        ASSERT_TRUE(Read(again)) << "seed " << seed;
        ASSERT_EQ(Write(again), first) << "seed " << seed;
    }
}

/// Damages the layout of a report, in most cases without breaking its markup.
std::string changeLayout(std::string bytes, std::mt19937& random)
{
    static constexpr std::pair<std::string_view, std::string_view> c_Changes[] = {
        {"\n", "\r\n"},
        {"\t\t<time>", "<time>"},
        {"\">\n", "\"warning=\"true\">\n"},
        {"\">\n", "\" warning=\"true\">\n"},
        {"\">\n", "\"  warning=\"true\">\n"},
        {"\">\n", "\" >\n"},
        {"</time>", "</time >"},
        {"</time>", "</Time>"},
        {"<memory>", "<memory>-"},
        {"<memory>", "<memory> +"},
        {"<time>", "<time>inf"},
        {"<time>", "<time>1e"},
        {"</time>", "e-3</time>"},
        {"<memorydelta>", "<memorydelta>99999999999999999999"},
        {"<memorydelta>", "<memorydelta/><memorydelta>"},
        {"<testcase id=\"", "<testcase id=\"-"},
        {"<testcase id=\"", "<testcase  id=\""},
        {"<testcase id=\"", "<testcase id=\"1\" id=\""},
        {"<testcase id=\"", "<testcase/><testcase id=\""},
        {"<testcase id=\"", "<testcase id=\"5\"/><testcase id=\""},
        {"<testcase id=\"", "<x/><testcase id=\""},
        {"<testcase id=\"", "<!-- <testcase id=\"7\"> --><testcase id=\""},
        {"<testcase id=\"", "<![CDATA[<testcase id=\"7\">]]><testcase id=\""},
        {"<dump type=\"info\">", "<dump type=\"note\"> "},
        {"<dump type=\"info\">", "<dump type=\"\">\r\n"},
        {"</dump>", "\t</dump>"},
        {"</dump>", "<!-- --></dump>"},
        {"</dump>", "</dump><dump/>"},
        {"</dump>", "</dump>text"},
        {"</result>", "</result><result type=\"OK\"/>"},
        {"</failure>", "</failure><failure message=\"\" type=\"\"></failure>"},
        {"</testcase>", "</testcase>text"},
        {"</testcase>", "</testcase><SystemInfo><GPU>x</GPU></SystemInfo>"},
        {"</testcase>", "</testcase></testsuite><testsuite>"},
        {"</testsuite>", "</testsuite>x"},
        {"</testsuite>", "</testsuite> <!-- -->\n"},
        {"</testsuite>", ""},
    };
    const auto [from, to] = c_Changes[random() % std::size(c_Changes)];
    std::vector<std::size_t> places;
    for (std::size_t place = bytes.find(from); place != std::string::npos; place = bytes.find(from, place + 1))
    {
        places.push_back(place);
    }
    return places.empty() ? bytes : bytes.replace(places[random() % places.size()], from.size(), to);
}

TEST_F(XmlReportRoundTrip, ReadsItsOwnLayoutLikeAnyOtherLayout)
{
    constexpr unsigned c_Reports = 500;
    constexpr std::string_view c_Declared = "standalone='yes'";
    const CapturedOutput output;
    const auto readAgain = [this](const std::string& bytes) {
        m_folder.WriteFile(L"Report.xml", bytes);
        SReportData data;
        return Read(data) ? Write(data) : std::string();
    };
    for (unsigned seed = 0; seed < c_Reports; ++seed)
    {
        std::mt19937 random(seed);
        std::string bytes = changeLayout(Write(MakeRandomReport(random)), random);
        bytes = seed % 4 == 0 ? damage(std::move(bytes), random) : bytes;
        const std::string result = readAgain(bytes);
        // A blank here changes the writer's layout but not the content.
        const std::size_t place = bytes.find(c_Declared);
        ASSERT_EQ(result, readAgain(bytes.replace(std::min(place, bytes.size()), 0, " "))) << "seed " << seed;
    }
}

TEST_F(XmlReportRoundTrip, DropsAnEmptyBuildRecord)
{
    // Like the record of a build outside a checkout.
    SReportData data;
    data.PscmInfo = std::make_unique<LuTestSuiteUtils::SPscmInfo>();
    EXPECT_NE(Write(data).find("\t\t<PscmRepository></PscmRepository>\n"), std::string::npos);
    ASSERT_TRUE(Read(data));

    EXPECT_EQ(data.PscmInfo, nullptr);
    EXPECT_EQ(Write(data).find("Pscm"), std::string::npos);
}

TEST_F(XmlReportRoundTrip, ReadsAResultWithoutANameAsUnknown)
{
    SReportData data;
    data.Cases.resize(1);
    data.Cases[0].Result = LuTestSuiteRun::ECaseRunResult::NoMatchingCase;
    Write(data);
    ASSERT_TRUE(Read(data));

    EXPECT_EQ(data.Cases.at(0).Result, LuTestSuiteRun::ECaseRunResult::Unknown);
}

} // namespace

#include <iterator>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/reportmodels.h"
#include "tests/support/scopedfolder.h"

namespace
{

using SReportData = LuTestSuiteReport::SReportData;

/// What is written, read and written again.
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

TEST_F(XmlReportRoundTrip, KeepsEveryFieldThatAFileHolds)
{
    const SReportData written = MakeReport();
    const std::string first = Write(written);
    SReportData data;
    ASSERT_TRUE(Read(data));

    EXPECT_EQ(Write(data), first);
    EXPECT_EQ(data.Classes.at(0).Successful, written.Classes.at(0).Successful);
    EXPECT_EQ(data.Cases.back().Info, written.Cases.back().Info);
    EXPECT_EQ(data.ClassesFlagged, 0U) << "no file holds it";
}

TEST_F(XmlReportRoundTrip, GivesTheSameBytesForRandomRecords)
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

/// Damages a report at a few random places.
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

TEST_F(XmlReportRoundTrip, ComesToRestAfterOneReadingOfADamagedReport)
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
        // What is left of the damage is no longer markup, or makes the report unreadable.
        const std::string first = Write(data);
        SReportData again;
        if (Read(again))
        {
            ++readable;
            ASSERT_EQ(Write(again), first) << "seed " << seed;
        }
    }
    EXPECT_GT(readable, c_Reports / 10);
}

TEST_F(XmlReportRoundTrip, ForgetsAResultWithoutANameOfItsOwn)
{
    SReportData data;
    data.Cases.resize(1);
    data.Cases[0].Result = LuTestSuiteRun::ECaseRunResult::NoMatchingCase;
    Write(data);
    ASSERT_TRUE(Read(data));

    EXPECT_EQ(data.Cases.at(0).Result, LuTestSuiteRun::ECaseRunResult::Unknown);
}

} // namespace

#include "testing/lutestsuiterunner/history/reports/page.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/lutestsuiterunner/history/analysis/findingsarchive.h"

using namespace Runner::History;

namespace
{

class HistoryPage : public CFindingsArchive
{
protected:
    bool hasPagePart(const std::string& part) const
    {
        return MakePage(m_analyses, {}, 0).find(part) != std::string::npos;
    }
};

TEST_F(HistoryPage, ShowsFindingsAndEscapesTheirTexts)
{
    EXPECT_TRUE(hasPagePart("&lt;b&gt;größer &amp; &quot;mehr&quot;&lt;/b&gt;"));
    EXPECT_FALSE(hasPagePart("<b>größer"));
    EXPECT_TRUE(hasPagePart("Wert 4 &lt; 5"));
    EXPECT_TRUE(hasPagePart("<section id=\"k1-slower\"><h3>Langsamer <small>1</small></h3>"));
    EXPECT_TRUE(hasPagePart("3-mal hin und zurück, 3 von 60 fehlgeschlagen; auch mit demselben Build"));
}

TEST_F(HistoryPage, DoesNotReferToOtherFilesOrServers)
{
    const std::string page = MakePage(m_analyses, {}, 0);
    EXPECT_EQ(page.find("src="), std::string::npos);
    EXPECT_EQ(page.find("<link"), std::string::npos);
    EXPECT_EQ(page.find("http:"), std::string::npos);
    EXPECT_EQ(page.find("https:"), std::string::npos);
}

TEST_F(HistoryPage, ShowsHowOftenTheRunsWereShuffled)
{
    EXPECT_TRUE(hasPagePart("20-mal in anderen zufälligen Reihenfolgen"));
}

TEST_F(HistoryPage, SaysThatNoGateHoldsBecauseOfUnreadableRuns)
{
    const std::vector<SGate> rules = {ReadGate(L"missing<9")};
    const std::string page = MakePage(m_analyses, CheckGates(rules, m_analyses, 0, {L"a&b.xml", L"c.xml"}), 0);
    EXPECT_NE(page.find("<p>Keine Bedingung ist erfüllt, denn der neueste Lauf ist vielleicht nicht lesbar: "
                        "a&amp;b.xml, c.xml.</p>"),
              std::string::npos);

    const std::string readable = MakePage(m_analyses, CheckGates(rules, m_analyses, 0, {}), 0);
    EXPECT_NE(readable.find("<h2>Bedingungen</h2>"), std::string::npos);
    EXPECT_EQ(readable.find("nicht lesbar"), std::string::npos);
}

TEST_F(HistoryPage, WarnsOfUnreadableRunsEvenWithoutGates)
{
    const std::string page = MakePage(m_analyses, CheckGates({}, m_analyses, 0, {L"a&b.xml", L"c.xml"}), 0);
    EXPECT_NE(page.find("<p>Hier fehlt vielleicht der neueste Lauf. Nicht lesbar: a&amp;b.xml, c.xml.</p>"),
              std::string::npos);
    EXPECT_EQ(page.find("Bedingung"), std::string::npos);

    EXPECT_FALSE(hasPagePart("Nicht lesbar"));
}

TEST_F(HistoryPage, SaysThatNothingChangedInAnArchiveWithOneRun)
{
    SyntheticRuns::SSettings settings;
    settings.cases = 3;
    settings.runs = 1;
    const SyntheticRuns::SArchive archive = MakeArchive(settings);
    std::vector<SAnalysis> analyses;
    analyses.push_back(Analyze(L"", archive.GetTable(), {}, AnalyzeSteps(archive.GetTable(), {})));
    EXPECT_NE(MakePage(analyses, {}, 0).find("hat sich nichts bewegt"), std::string::npos);
}

} // namespace

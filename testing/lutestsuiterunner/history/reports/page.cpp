#include "testing/lutestsuiterunner/history/reports/page.h"

#include <algorithm>

#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuiterunner/history/reports/drawings.h"
#include "testing/lutestsuiterunner/history/reports/findingtables.h"
#include "testing/lutestsuiterunner/history/reports/germantext.h"
#include "testing/lutestsuiterunner/history/reports/overviewtables.h"
#include "testing/lutestsuiterunner/history/reports/pageresources.h"

namespace Runner::History
{

namespace
{

std::string getStyle()
{
    // The lines of the reports' style sheet end in CR LF.
    std::string style = LuTestSuiteUtils::GetDefaultStylesheet();
    std::erase(style, '\r');
    return style + c_PageStyle;
}

std::string makeTiles(const SAnalysis& analysis, std::size_t newest, const std::string& prefix)
{
    std::string text = "<ul class=\"tiles\">";
    for (const SFindingKind& kind : GetFindingKinds())
    {
        const std::size_t count = GetFindings(analysis, kind, newest).size();
        if (count > 0)
        {
            text += std::string("<li class=\"") + (kind.isBad ? "bad" : "good") + "\"><a href=\"#" + prefix +
                    kind.name + "\"><b>" + FormatCount(count) + "</b>" + ToMarkup(kind.title) + "</a></li>";
        }
    }
    return text == "<ul class=\"tiles\">" ? "<p>In diesen Läufen hat sich nichts bewegt.</p>\n" : text + "</ul>\n";
}

/// Says that the newest run may be missing, and what this means for the gates. Empty if each run that may be the newest
/// could be read.
std::string makeUnreadable(const SGateResults& gates)
{
    std::string names;
    for (const std::wstring& name : gates.unreadable)
    {
        names += (names.empty() ? "" : ", ") + ToMarkup(name);
    }
    const std::string text = gates.results.empty()
                                 ? "Hier fehlt vielleicht der neueste Lauf. Nicht lesbar: "
                                 : "Keine Bedingung ist erfüllt, denn der neueste Lauf ist vielleicht nicht lesbar: ";
    return names.empty() ? std::string() : "<p>" + text + names + ".</p>\n";
}

std::string makeGates(const SGateResults& gates)
{
    if (gates.results.empty())
    {
        return makeUnreadable(gates);
    }
    std::string text = "<h2>Bedingungen</h2>\n" + makeUnreadable(gates) +
                       "<table class=\"gates\"><thead><tr><th>Bedingung</th><th>gezählt</th>"
                       "<th>erfüllt</th></tr></thead><tbody>\n";
    for (const SGateResult& gate : gates.results)
    {
        text += std::string(gate.holds ? "<tr>" : "<tr class=\"failed\">") + "<td><code>" + ToMarkup(gate.gate.rule) +
                "</code></td><td class=\"number\">" + FormatCount(gate.count) + "</td><td>" +
                (gate.holds ? "ja" : "nein") + "</td></tr>\n";
    }
    return text + "</tbody></table>\n";
}

std::string makeConfiguration(const SAnalysis& analysis, std::size_t newest, const std::string& prefix)
{
    const std::size_t runCount = analysis.table.GetRunCount();
    const std::size_t caseCount = analysis.table.GetRun(runCount - 1).cells.size();
    std::string text = "<h2>" + ToMarkup(GetConfigurationName(analysis)) + "</h2>\n";
    text += "<p class=\"lead\">" + FormatCount(runCount) + (runCount == 1 ? " Lauf, " : " Läufe, ") +
            GetRunLabel(analysis.table.GetRun(0)) + " bis " + GetRunLabel(analysis.table.GetRun(runCount - 1)) +
            "; im neuesten " + FormatCount(caseCount) + (caseCount == 1 ? " Fall.</p>\n" : " Fälle.</p>\n");
    text += makeTiles(analysis, newest, prefix);
    text += MakeTrend(analysis);
    text += MakeFindingTables(analysis, newest, prefix);
    text += MakeClassTable(analysis);
    text += MakeRunTable(analysis);
    text += MakeMethod(analysis);
    return text;
}

} // namespace

std::string MakePage(const std::vector<SAnalysis>& analyses, const SGateResults& gates, std::size_t newest)
{
    std::string page = "<!DOCTYPE html>\n<html lang=\"de\">\n<head>\n<meta charset=\"utf-8\"/>\n"
                       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
                       "<title>LuTestSuite Verlauf</title>\n<style>\n" +
                       getStyle() + "</style>\n</head>\n<body>\n<h1>Verlauf</h1>\n";
    page += makeGates(gates);
    page += "<div class=\"search\" hidden=\"hidden\"><label for=\"search\">Suchen</label>"
            "<input id=\"search\" type=\"search\" placeholder=\"Klasse, Fall, Meldung\"/><span></span></div>\n";
    for (std::size_t index = 0; index < analyses.size(); ++index)
    {
        page += makeConfiguration(analyses[index], newest, std::string("k") + std::to_string(index + 1) + "-");
    }
    return page + "<script>\n" + c_PageScript + "</script>\n</body>\n</html>\n";
}

} // namespace Runner::History

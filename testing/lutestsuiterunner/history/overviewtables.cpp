#include "testing/lutestsuiterunner/history/overviewtables.h"

#include <algorithm>
#include <map>
#include <optional>

#include "testing/lutestsuiterunner/history/drawings.h"
#include "testing/lutestsuiterunner/history/findings.h"
#include "testing/lutestsuiterunner/history/findingtables.h"
#include "testing/lutestsuiterunner/history/germantext.h"

namespace Runner::History
{

namespace
{

std::string makeNumber(const std::string& text, double key)
{
    return "<td class=\"number\" data-key=\"" + std::to_string(key) + "\">" + text + "</td>";
}

double getSeconds(const SRun& run)
{
    double seconds = 0.0;
    for (const SCell& cell : run.cells)
    {
        seconds += cell.measured.seconds;
    }
    return seconds;
}

std::size_t countFailed(const SRun& run)
{
    return static_cast<std::size_t>(std::ranges::count_if(
        run.cells, [](const SCell& cell) { return cell.measured.HasVerdict() && !cell.measured.HasPassed(); }));
}

std::string describeTempo(const SAnalysis& analysis)
{
    if (analysis.steps.whole.empty())
    {
        return {};
    }
    const SStep& step = analysis.steps.whole.back();
    return "<p>Seit " + GetRunLabel(analysis.table.GetRun(step.index)) + " läuft das Ganze " +
           (step.IsUp() ? "langsamer" : "schneller") + " (" + FormatChange(step.before, step.after) +
           "): Maschine, Build oder gemeinsamer Code. Die einzelnen Fälle sind davon bereinigt.</p>\n";
}

/// The times of a class over the runs.
struct SClassTimes
{
    std::vector<std::optional<double>> seconds;
    std::size_t cases = 0; ///< in the newest run

    double GetNewest() const { return seconds.back().value_or(0.0); }
};

std::map<std::wstring_view, SClassTimes> getClassTimes(const CTable& table)
{
    std::map<std::wstring_view, SClassTimes> classes;
    for (std::size_t run = 0; run < table.GetRunCount(); ++run)
    {
        const bool isNewest = run + 1 == table.GetRunCount();
        SClassTimes* times = nullptr;
        std::wstring_view name;
        for (const SCell& cell : table.GetRun(run).cells)
        {
            const std::wstring& className = table.GetName(cell.caseIndex).className;
            // Cases of one class usually follow each other.
            if (times == nullptr || name != className)
            {
                name = className;
                times = &classes[name];
                times->seconds.resize(table.GetRunCount());
            }
            times->seconds[run] = times->seconds[run].value_or(0.0) + cell.measured.seconds;
            times->cases += isNewest ? 1 : 0;
        }
    }
    return classes;
}

/// How many findings began in each run, by kind.
std::map<std::size_t, std::string> getBeginnings(const SAnalysis& analysis)
{
    std::map<std::size_t, std::string> texts;
    for (const SFindingKind& kind : GetFindingKinds())
    {
        std::map<std::size_t, std::size_t> counts;
        for (const SFinding& finding : GetFindings(analysis, kind, 0))
        {
            ++counts[finding.beginning.index];
        }
        for (const auto& [run, count] : counts)
        {
            std::string& text = texts[run];
            text += (text.empty() ? "" : ", ") + FormatCount(count) + " " + ToMarkup(kind.title);
        }
    }
    return texts;
}

} // namespace

std::string MakeTrend(const SAnalysis& analysis)
{
    STrend trend;
    for (std::size_t index = 0; index < analysis.table.GetRunCount(); ++index)
    {
        const SRun& run = analysis.table.GetRun(index);
        trend.seconds.push_back(getSeconds(run));
        trend.failed.push_back(countFailed(run));
        trend.titles.push_back(ToMarkup(run.label.begin) + " " + ToMarkup(run.label.name) + ": " +
                               FormatSeconds(trend.seconds.back()) + ", " + FormatCount(trend.failed.back()) +
                               " fehlgeschlagen");
    }
    const double longest = *std::ranges::max_element(trend.seconds);
    const std::size_t most = *std::ranges::max_element(trend.failed);
    return "<h3>Das Ganze</h3>\n" + describeTempo(analysis) + "<figure>" + DrawTrend(trend) +
           "<figcaption class=\"legend\"><span>Linie: Gesamtzeit aller Fälle, zuletzt " +
           FormatSeconds(trend.seconds.back()) + ", höchstens " + FormatSeconds(longest) +
           "</span><span>Balken: Fehlschläge, zuletzt " + FormatCount(trend.failed.back()) + ", höchstens " +
           FormatCount(most) + "</span></figcaption></figure>\n";
}

std::string MakeClassTable(const SAnalysis& analysis)
{
    constexpr std::size_t c_Most = 30;
    const std::map<std::wstring_view, SClassTimes> times = getClassTimes(analysis.table);
    std::vector<const std::pair<const std::wstring_view, SClassTimes>*> classes;
    double total = 0.0;
    for (const auto& entry : times)
    {
        classes.push_back(&entry);
        total += entry.second.GetNewest();
    }
    std::ranges::stable_sort(classes, std::ranges::greater(),
                             [](const auto* entry) { return entry->second.GetNewest(); });
    const std::size_t count = classes.size();
    classes.resize(std::min(count, c_Most));
    std::string text = "<section><h3>Klassen, die am meisten Zeit kosten</h3>\n<p>" + FormatCount(classes.size()) +
                       " von " + FormatCount(count) +
                       " Klassen, nach ihrer Zeit im neuesten Lauf.</p>\n<div class=\"wide\">"
                       "<table class=\"classes\"><thead><tr><th>Klasse</th><th>Fälle</th><th>Zeit</th>"
                       "<th>Anteil</th><th>Verlauf</th></tr></thead><tbody>\n";
    for (const auto* entry : classes)
    {
        const double newest = entry->second.GetNewest();
        const double share = total > 0.0 ? newest / total * 100.0 : 0.0;
        text += "<tr><td>" + ToMarkup(entry->first) + "</td>" +
                makeNumber(FormatCount(entry->second.cases), static_cast<double>(entry->second.cases)) +
                makeNumber(FormatSeconds(newest), newest) + makeNumber(FormatNumber(share, 1) + " %", share) + "<td>" +
                DrawLine({entry->second.seconds, {}, 0, 0, "Zeit der Klasse"}) + "</td></tr>\n";
    }
    return text + "</tbody></table></div></section>\n";
}

std::string MakeRunTable(const SAnalysis& analysis)
{
    const std::map<std::size_t, std::string> beginnings = getBeginnings(analysis);
    std::string text = "<details><summary>Alle Läufe</summary><div class=\"wide\"><table class=\"runs\"><thead><tr>"
                       "<th>Nr.</th><th>Beginn</th><th>Lauf</th><th>Build</th><th>Maschine</th><th>Fälle</th>"
                       "<th>fehlgeschlagen</th><th>Zeit</th><th>Tempo</th><th>hier begann</th></tr></thead><tbody>\n";
    for (std::size_t index = analysis.table.GetRunCount(); index-- > 0;)
    {
        const SRun& run = analysis.table.GetRun(index);
        const std::size_t failed = countFailed(run);
        const double seconds = getSeconds(run);
        const auto began = beginnings.find(index);
        text += "<tr>" + makeNumber(FormatCount(index + 1), static_cast<double>(index)) + "<td>" +
                ToMarkup(run.label.begin) + "</td><td>" + ToMarkup(run.label.name) + "</td><td>" +
                ToMarkup(run.label.build) + "</td><td>" + ToMarkup(run.label.machine) + "</td>" +
                makeNumber(FormatCount(run.cells.size()), static_cast<double>(run.cells.size())) +
                makeNumber(FormatCount(failed), static_cast<double>(failed)) +
                makeNumber(FormatSeconds(seconds), seconds) +
                makeNumber(FormatChange(1.0, analysis.steps.tempo[index]), analysis.steps.tempo[index]) + "<td>" +
                (began == beginnings.end() ? std::string() : began->second) + "</td></tr>\n";
    }
    return text + "</tbody></table></div></details>\n";
}

std::string MakeMethod(const SAnalysis& analysis)
{
    const SShuffleCheck& check = analysis.steps.check;
    std::string text = "<details><summary>Wie sicher ist das?</summary>\n<p>Zeiten und Speicher: " +
                       FormatCount(analysis.steps.seriesCount) +
                       " Reihen, in jeder wird ein Sprung gesucht. Gemeldet wird er, "
                       "wenn Zufall in einem ganzen Archiv ohne Änderung höchstens mit der Wahrscheinlichkeit " +
                       FormatNumber(analysis.rules.alarmRate, 3) + " etwas meldet: bei mindestens " +
                       FormatNumber(analysis.steps.thresholds.bits, 1) + " Bit nach dem Rangsummentest über " +
                       FormatCount(analysis.steps.testCount) + " Tests, oder bei einer Größe von mehr als " +
                       FormatNumber(analysis.steps.thresholds.deviations, 2) + " Standardfehlern, der größten in " +
                       FormatCount(analysis.steps.shuffleCount) + " neu gemischten Archiven. Kleiner als " +
                       FormatNumber(analysis.rules.smallestChange * 100.0, 1) + " % wird nichts gemeldet.</p>\n";
    text += "<p>Probe: dieselben Läufe, " + FormatCount(check.archives) +
            "-mal in anderen zufälligen Reihenfolgen, hätten " + FormatCount(check.alarms) +
            (check.alarms == 1 ? " Sprung" : " Sprünge") + " gemeldet, in " + FormatCount(check.archivesWithAlarm) +
            (check.archivesWithAlarm == 1 ? " Archiv" : " Archiven") + "; zu erwarten sind höchstens " +
            FormatNumber(static_cast<double>(check.archives) * analysis.rules.alarmRate, 1) +
            " Archive.</p>\n</details>\n";
    return text;
}

} // namespace Runner::History

#include "testing/lutestsuiterunner/history/reports/overviewtables.h"

#include <algorithm>
#include <map>
#include <optional>

#include "testing/lutestsuiterunner/history/analysis/findings.h"
#include "testing/lutestsuiterunner/history/reports/drawings.h"
#include "testing/lutestsuiterunner/history/reports/findingtables.h"
#include "testing/lutestsuiterunner/history/reports/germantext.h"

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
    const std::string interval = GetInterval(analysis.table, step.first, step.last);
    return "<p>Seit " + GetRunLabel(analysis.table.GetRun(step.index)) +
           (interval.empty() ? interval : " (" + interval + ")") + " läuft das Ganze " +
           (step.IsUp() ? "langsamer" : "schneller") + " (" + FormatChange(step.before, step.after) +
           "): Maschine, Build oder gemeinsamer Code. Die einzelnen Fälle sind davon bereinigt.</p>\n";
}

/// The times of a class over the runs.
struct SClassTimes
{
    std::wstring_view name;
    std::vector<std::optional<double>> seconds;
    std::size_t cases = 0; ///< in the newest run

    double GetNewest() const { return seconds.back().value_or(0.0); }
};

/// The times of all classes, and the index of each case's class in them.
struct SClasses
{
    std::vector<SClassTimes> times;
    std::vector<std::size_t> ofCases;
};

/// Compares the name of each case once, instead of once for each of its runs.
SClasses getClasses(const CTable& table)
{
    std::map<std::wstring_view, std::size_t> indices;
    SClasses classes;
    classes.ofCases.reserve(table.GetCaseCount());
    for (std::size_t testCase = 0; testCase < table.GetCaseCount(); ++testCase)
    {
        const std::wstring_view name = table.GetName(testCase).className;
        const auto [entry, isNew] = indices.try_emplace(name, classes.times.size());
        if (isNew)
        {
            classes.times.push_back({name, std::vector<std::optional<double>>(table.GetRunCount()), 0});
        }
        classes.ofCases.push_back(entry->second);
    }
    return classes;
}

/// Leaves out classes that have no case in any run of the table.
std::vector<SClassTimes> getClassTimes(const CTable& table)
{
    SClasses classes = getClasses(table);
    for (std::size_t run = 0; run < table.GetRunCount(); ++run)
    {
        const bool isNewest = run + 1 == table.GetRunCount();
        for (const SCell& cell : table.GetRun(run).cells)
        {
            SClassTimes& times = classes.times[classes.ofCases[cell.caseIndex]];
            times.seconds[run] = times.seconds[run].value_or(0.0) + cell.measured.seconds;
            times.cases += isNewest ? 1 : 0;
        }
    }
    std::erase_if(classes.times, [](const SClassTimes& times) {
        return std::ranges::none_of(times.seconds, [](const auto& seconds) { return seconds.has_value(); });
    });
    return std::move(classes.times);
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
    std::vector<SClassTimes> classes = getClassTimes(analysis.table);
    double total = 0.0;
    for (const SClassTimes& times : classes)
    {
        total += times.GetNewest();
    }
    std::ranges::sort(classes, [](const SClassTimes& a, const SClassTimes& b) {
        return a.GetNewest() != b.GetNewest() ? a.GetNewest() > b.GetNewest() : a.name < b.name;
    });
    const std::size_t count = classes.size();
    classes.resize(std::min(count, c_Most));
    std::string text = "<section><h3>Klassen, die am meisten Zeit kosten</h3>\n<p>" + FormatCount(classes.size()) +
                       " von " + FormatCount(count) +
                       " Klassen, nach ihrer Zeit im neuesten Lauf.</p>\n<div class=\"wide\">"
                       "<table class=\"classes\"><thead><tr><th>Klasse</th><th>Fälle</th><th>Zeit</th>"
                       "<th>Anteil</th><th>Verlauf</th></tr></thead><tbody>\n";
    for (const SClassTimes& times : classes)
    {
        const double newest = times.GetNewest();
        const double share = total > 0.0 ? newest / total * 100.0 : 0.0;
        text += "<tr><td>" + ToMarkup(times.name) + "</td>" +
                makeNumber(FormatCount(times.cases), static_cast<double>(times.cases)) +
                makeNumber(FormatSeconds(newest), newest) + makeNumber(FormatNumber(share, 1) + " %", share) + "<td>" +
                DrawLine({times.seconds, {}, 0, 0, "Zeit der Klasse"}) + "</td></tr>\n";
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
    std::string text =
        "<section><h3>Wie sicher ist das?</h3>\n<p>Zeiten und Speicher: " + FormatCount(analysis.steps.seriesCount) +
        " Reihen, in jeder wird ein Sprung gesucht. Gemeldet wird er, "
        "wenn Zufall in einem ganzen Archiv ohne Änderung höchstens mit der Wahrscheinlichkeit " +
        FormatNumber(analysis.rules.alarmRate, 3) + " etwas meldet: bei mindestens " +
        FormatNumber(analysis.steps.thresholds.bits, 1) + " Bit nach dem Rangsummentest über " +
        FormatCount(analysis.steps.testCount) + " Tests, oder bei einer Größe von mehr als " +
        FormatNumber(analysis.steps.thresholds.deviations, 2) + " Standardfehlern, die nur eines von " +
        FormatCount(analysis.steps.shuffleCount) + " neu gemischten Archiven übertrifft. Kleiner als " +
        FormatNumber(analysis.rules.smallestChange * 100.0, 1) + " % wird nichts gemeldet.</p>\n";
    text += "<p>Probe: dieselben Läufe, " + FormatCount(check.archives) +
            "-mal in anderen zufälligen Reihenfolgen, hätten " + FormatCount(check.alarms) +
            (check.alarms == 1 ? " Sprung" : " Sprünge") + " gemeldet, in " + FormatCount(check.archivesWithAlarm) +
            (check.archivesWithAlarm == 1 ? " Archiv" : " Archiven") + "; zu erwarten sind höchstens " +
            FormatNumber(static_cast<double>(check.archives) * analysis.rules.alarmRate, 1) +
            ". Die Wahrscheinlichkeit bestimmt <code>--alarm-rate</code>, die Probe <code>--reshuffles</code> und "
            "<code>--seed</code>.</p>\n</section>\n";
    return text;
}

} // namespace Runner::History

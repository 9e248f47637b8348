#include "testing/lutestsuiterunner/history/reports/findingtables.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

#include "testing/lutestsuiterunner/history/reports/drawings.h"
#include "testing/lutestsuiterunner/history/reports/germantext.h"

namespace Runner::History
{

namespace
{

/// The number of rows of a table that have drawings. A drawing takes several times the space of a row's texts, so a
/// page with drawings of a hundred thousand rows would be too large.
constexpr std::size_t c_MostDrawn = 500;

using Messages = std::unordered_map<std::uint32_t, const std::wstring*>;

/// The newest message of each case.
Messages getMessages(const CTable& table)
{
    Messages messages;
    for (std::size_t run = 0; run < table.GetRunCount(); ++run)
    {
        for (const SMessage& message : table.GetRun(run).messages)
        {
            messages[message.caseIndex] = &message.text;
        }
    }
    return messages;
}

std::string makeCell(const std::string& content)
{
    return "<td>" + content + "</td>";
}

std::string makeCell(const std::string& content, double key)
{
    return "<td data-key=\"" + std::to_string(key) + "\">" + content + "</td>";
}

/// The rows of one table.
class CRows
{
public:
    CRows(const SAnalysis& analysis, const SFindingKind& kind, const Messages& messages)
        : m_analysis(analysis), m_table(analysis.table), m_kind(kind), m_messages(messages)
    {
    }

    std::string MakeRow(const SFinding& finding, bool isDrawn) const;

    /// The number by which a table is sorted, the highest first.
    double GetWeight(const SFinding& finding) const;

private:
    std::string getSince(const SBeginning& beginning) const;
    std::string getDetail(const SCaseFindings& findings) const;
    std::string getFlakiness(const SFlakiness& flaky) const;
    std::string getMessage(std::uint32_t caseIndex) const;
    std::string getLine(const SCaseFindings& findings) const;
    bool isAbout(std::string_view name, std::string_view otherName) const
    {
        return m_kind.name == name || m_kind.name == otherName;
    }

    const SAnalysis& m_analysis;
    const CTable& m_table;
    const SFindingKind& m_kind;
    const Messages& m_messages;
};

double CRows::GetWeight(const SFinding& finding) const
{
    const SCaseFindings& findings = *finding.findings;
    if (isAbout("slower", "faster"))
    {
        return std::abs(findings.times.back().after - findings.times.back().before);
    }
    if (isAbout("hungrier", "leaner"))
    {
        return std::abs(findings.memory.back().after - findings.memory.back().before);
    }
    if (isAbout("flaky", "quarantine"))
    {
        return findings.outcomes.flaky->returns;
    }
    return static_cast<double>(finding.beginning.index);
}

std::string CRows::getSince(const SBeginning& beginning) const
{
    const std::string interval = GetInterval(m_table, beginning.first, beginning.last);
    return GetRunLabel(m_table.GetRun(beginning.index)) +
           (interval.empty() ? interval : "<br/><small>" + interval + "</small>");
}

std::string CRows::getFlakiness(const SFlakiness& flaky) const
{
    std::string text = flaky.returns == 1 ? "1-mal hin und zurück" : FormatCount(flaky.returns) + "-mal hin und zurück";
    text += ", " + FormatCount(flaky.failures) + " von " + FormatCount(flaky.runs) + " fehlgeschlagen";
    return flaky.isProven ? text + "; auch mit demselben Build" : text;
}

std::string CRows::getMessage(std::uint32_t caseIndex) const
{
    const auto message = m_messages.find(caseIndex);
    return message == m_messages.end() ? std::string() : "<br/><small>" + ToMarkup(*message->second) + "</small>";
}

std::string CRows::getDetail(const SCaseFindings& findings) const
{
    if (isAbout("slower", "faster"))
    {
        const SStep& step = findings.times.back();
        return FormatSeconds(step.before) + " → " + FormatSeconds(step.after) + " (" +
               FormatChange(step.before, step.after) + ")";
    }
    if (isAbout("hungrier", "leaner"))
    {
        const SStep& step = findings.memory.back();
        return FormatBytes(step.before) + " → " + FormatBytes(step.after) + " (" +
               FormatChange(step.before, step.after) + ")";
    }
    if (isAbout("more-allocations", "fewer-allocations"))
    {
        return FormatCount(findings.allocations->before) + " → " + FormatCount(findings.allocations->after) +
               " Allokationen";
    }
    if (isAbout("flaky", "quarantine"))
    {
        return getFlakiness(*findings.outcomes.flaky) + getMessage(findings.caseIndex);
    }
    if (isAbout("new-failures", "new-failures"))
    {
        const std::string message = getMessage(findings.caseIndex);
        return message.empty() ? message : message.substr(std::string_view("<br/>").size());
    }
    return {};
}

std::string CRows::getLine(const SCaseFindings& findings) const
{
    const bool isMemory = isAbout("hungrier", "leaner");
    const std::span<const EOutcome> outcomes = m_table.GetOutcomes(findings.caseIndex);
    std::vector<std::optional<double>> values(outcomes.size());
    for (std::size_t run = 0; run < outcomes.size(); ++run)
    {
        if (outcomes[run] == EOutcome::Passed)
        {
            values[run] = isMemory ? static_cast<double>(m_table.GetMemory(findings.caseIndex)[run])
                                   : m_table.GetSeconds(findings.caseIndex)[run] / m_analysis.steps.tempo[run];
        }
    }
    SLine line{values, {}, 0, 0, isMemory ? "Speicher" : "Zeit"};
    const std::vector<SStep>& steps = isMemory ? findings.memory : findings.times;
    for (const SStep& step : steps)
    {
        line.marks.push_back(step.index);
        line.intervalFirst = step.first;
        line.intervalLast = step.last;
    }
    return DrawLine(line);
}

std::string CRows::MakeRow(const SFinding& finding, bool isDrawn) const
{
    const SCaseFindings& findings = *finding.findings;
    const SCaseName& name = m_table.GetName(findings.caseIndex);
    const std::span<const EOutcome> outcomes = m_table.GetOutcomes(findings.caseIndex);
    return "<tr>" + makeCell(ToMarkup(name.className)) + makeCell(ToMarkup(name.caseName)) +
           makeCell(getSince(finding.beginning), static_cast<double>(finding.beginning.index)) +
           makeCell(isDrawn ? DrawOutcomes(outcomes) : std::string(),
                    static_cast<double>(std::ranges::count(outcomes, EOutcome::Failed))) +
           makeCell(isDrawn ? getLine(findings) : std::string(), GetWeight(finding)) +
           makeCell(getDetail(findings), GetWeight(finding)) + "</tr>\n";
}

std::string makeHead(const SFindingKind& kind)
{
    const bool isMemory = std::string_view(kind.name) == "hungrier" || std::string_view(kind.name) == "leaner";
    return std::string("<table class=\"findings\"><thead><tr><th>Klasse</th><th>Fall</th><th>Seit</th>"
                       "<th>Ergebnisse, neuestes rechts</th><th>") +
           (isMemory ? "Speicher" : "Zeit") + "</th><th>Was</th></tr></thead>\n<tbody>\n";
}

std::string makeTable(const SAnalysis& analysis, const SFindingKind& kind, std::vector<SFinding> findings,
                      const Messages& messages)
{
    const CRows rows(analysis, kind, messages);
    std::ranges::stable_sort(findings, std::ranges::greater(),
                             [&](const SFinding& finding) { return rows.GetWeight(finding); });
    std::string text;
    if (findings.size() > c_MostDrawn)
    {
        text += "<p>Alle Fälle sind gelistet, die ersten " + FormatCount(c_MostDrawn) + " mit Zeichnungen.</p>\n";
    }
    text += makeHead(kind);
    for (std::size_t index = 0; index < findings.size(); ++index)
    {
        text += rows.MakeRow(findings[index], index < c_MostDrawn);
    }
    return text + "</tbody></table>\n";
}

} // namespace

std::string GetRunLabel(const SRun& run)
{
    const std::wstring& text = run.label.begin.empty() ? run.label.name : run.label.begin;
    return "<span title=\"" + ToMarkup(run.label.name) + "\">" + ToMarkup(text) + "</span>";
}

std::string GetInterval(const CTable& table, std::size_t first, std::size_t last)
{
    return first == last ? std::string()
                         : "zwischen " + GetRunLabel(table.GetRun(first)) + " und " + GetRunLabel(table.GetRun(last));
}

std::string MakeFindingTables(const SAnalysis& analysis, std::size_t newest, const std::string& prefix)
{
    const Messages messages = getMessages(analysis.table);
    std::string text;
    for (const SFindingKind& kind : GetFindingKinds())
    {
        std::vector<SFinding> findings = GetFindings(analysis, kind, newest);
        const std::size_t count = findings.size();
        if (count > 0)
        {
            text += "<section id=\"" + prefix + kind.name + "\"><h3>" + ToMarkup(kind.title) + " <small>" +
                    FormatCount(count) + "</small></h3>\n<p>" + ToMarkup(kind.meaning) + "</p>\n" +
                    makeTable(analysis, kind, std::move(findings), messages) + "</section>\n";
        }
    }
    return text;
}

} // namespace Runner::History

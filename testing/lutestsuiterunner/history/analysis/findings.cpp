#include "testing/lutestsuiterunner/history/analysis/findings.h"

namespace Runner::History
{

namespace
{

using Beginning = std::optional<SBeginning>;

Beginning getFlaky(const SCaseFindings& findings)
{
    return findings.outcomes.flaky ? Beginning(findings.outcomes.flaky->beginning) : std::nullopt;
}

Beginning getQuarantine(const SCaseFindings& findings)
{
    return findings.outcomes.flaky && findings.outcomes.flaky->isProven ? getFlaky(findings) : std::nullopt;
}

/// The newest step determines the state of the case.
template<std::vector<SStep> SCaseFindings::*Steps, bool IsUp>
Beginning getStep(const SCaseFindings& findings)
{
    const std::vector<SStep>& steps = findings.*Steps;
    if (steps.empty() || steps.back().IsUp() != IsUp)
    {
        return std::nullopt;
    }
    return SBeginning{steps.back().index, steps.back().first, steps.back().last};
}

template<bool IsUp>
Beginning getAllocations(const SCaseFindings& findings)
{
    if (!findings.allocations || (findings.allocations->after > findings.allocations->before) != IsUp)
    {
        return std::nullopt;
    }
    const std::size_t index = findings.allocations->index;
    return SBeginning{index, index, index};
}

constexpr SFindingKind c_Kinds[] = {
    {"new-failures", L"Neue Fehlschläge", L"Zuletzt fehlgeschlagen, davor bestanden oder neu.", true,
     [](const SCaseFindings& findings) { return findings.outcomes.newFailure; }},
    {"flaky", L"Wackelige Fälle", L"Das Ergebnis wechselt hin und zurück.", true, getFlaky},
    {"quarantine", L"Vorschläge für die Quarantäne", L"Mit demselben Build bestanden und fehlgeschlagen.", true,
     getQuarantine},
    {"missing", L"Fehlende Fälle", L"Nicht mehr im neuesten Lauf.", true,
     [](const SCaseFindings& findings) { return findings.outcomes.missing; }},
    {"not-run", L"Nicht ausgeführte Fälle", L"Im neuesten Lauf ohne Ergebnis.", true,
     [](const SCaseFindings& findings) { return findings.outcomes.notRun; }},
    {"slower", L"Langsamer", L"Die Zeit ist gestiegen.", true, getStep<&SCaseFindings::times, true>},
    {"hungrier", L"Mehr Speicher", L"Der höchste Speicherbedarf ist gestiegen.", true,
     getStep<&SCaseFindings::memory, true>},
    {"more-allocations", L"Mehr Allokationen", L"Die sonst gleiche Zahl der Allokationen ist gestiegen.", true,
     getAllocations<true>},
    {"fixed", L"Behoben", L"Zuletzt bestanden, davor fehlgeschlagen.", false,
     [](const SCaseFindings& findings) { return findings.outcomes.fixed; }},
    {"faster", L"Schneller", L"Die Zeit ist gesunken.", false, getStep<&SCaseFindings::times, false>},
    {"leaner", L"Weniger Speicher", L"Der höchste Speicherbedarf ist gesunken.", false,
     getStep<&SCaseFindings::memory, false>},
    {"fewer-allocations", L"Weniger Allokationen", L"Die sonst gleiche Zahl der Allokationen ist gesunken.", false,
     getAllocations<false>},
    {"new", L"Neue Fälle", L"In den ersten Läufen noch nicht dabei.", false,
     [](const SCaseFindings& findings) { return findings.outcomes.added; }},
};

} // namespace

std::span<const SFindingKind> GetFindingKinds()
{
    return c_Kinds;
}

std::vector<SFinding> GetFindings(const SAnalysis& analysis, const SFindingKind& kind, std::size_t newest)
{
    const std::size_t runCount = analysis.table.GetRunCount();
    const std::size_t earliest = newest == 0 || newest > runCount ? 0 : runCount - newest;
    std::vector<SFinding> result;
    for (const SCaseFindings& findings : analysis.cases)
    {
        const std::optional<SBeginning> beginning = kind.get(findings);
        if (beginning && beginning->last >= earliest)
        {
            result.push_back({&findings, *beginning});
        }
    }
    return result;
}

} // namespace Runner::History

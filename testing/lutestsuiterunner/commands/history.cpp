/// The command "history": what has changed in an archive of runs.

#include <algorithm>
#include <charconv>
#include <iterator>
#include <map>
#include <optional>
#include <set>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lustream.h"
#include "base/os/console.h"
#include "testing/lutestsuitehost/hostmain.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/console/messages.h"
#include "testing/lutestsuiterunner/history/analysis/gates.h"
#include "testing/lutestsuiterunner/history/analysis/stepstore.h"
#include "testing/lutestsuiterunner/history/archive/archivefolder.h"
#include "testing/lutestsuiterunner/history/reports/caseseries.h"
#include "testing/lutestsuiterunner/history/reports/historyjson.h"
#include "testing/lutestsuiterunner/history/reports/page.h"

namespace Runner
{

namespace
{

using namespace History;

/// Analysing more runs takes too long.
constexpr std::uint32_t c_MostRuns = 200;

double readFraction(const std::wstring& text, const wchar_t* option, double least, double most)
{
    const std::string bytes = LbEncoding::ToUtf8(text);
    double number = 0.0;
    const char* const end = bytes.data() + bytes.size();
    const auto [place, error] = std::from_chars(bytes.data(), end, number);
    if (error != std::errc() || place != end || !(number >= least && number <= most))
    {
        throw LbFormat(L"Der Wert '%s' der Option '%s' ist falsch: erwartet wird eine Zahl von %g bis %g", text, option,
                       least, most);
    }
    return number;
}

SStepRules getRules(const SHistoryOptions& options)
{
    SStepRules rules;
    rules.alarmRate = readFraction(options.alarmRate, L"--alarm-rate", 0.001, 0.5);
    rules.smallestChange = readFraction(options.smallestChange, L"--min-change", 0.1, 1000.0) / 100.0;
    rules.checks = options.reshuffles;
    rules.checkSeed = options.seed;
    return rules;
}

/// For each configuration, its newest runs in their order, at most `most` runs.
std::map<std::wstring, std::vector<const SRun*>> groupRuns(const std::vector<SRun>& runs, std::size_t most)
{
    std::map<std::wstring, std::vector<const SRun*>> groups;
    for (const SRun& run : runs)
    {
        groups[run.label.configuration].push_back(&run);
    }
    for (auto& [configuration, group] : groups)
    {
        const std::size_t excess = group.size() - std::min(most, group.size());
        group.erase(group.begin(), group.begin() + static_cast<std::ptrdiff_t>(excess));
    }
    return groups;
}

/// Throws a German message if one of the wanted configurations occurs in no run of the archive.
void checkConfigurations(const std::vector<SRun>& runs, const std::vector<std::wstring>& wanted)
{
    std::set<std::wstring> known;
    std::ranges::transform(runs, std::inserter(known, known.end()),
                           [](const SRun& run) { return GetConfigurationName(run.label.configuration); });
    std::wstring names;
    for (const std::wstring& name : known)
    {
        names += (names.empty() ? L"'" : L", '") + name + L"'";
    }
    for (const std::wstring& name : wanted)
    {
        if (!known.contains(name))
        {
            throw LbFormat(L"Kein Lauf des Archivs hat die Konfiguration '%s'; bekannt sind %s", name, names);
        }
    }
}

/// Removes runs of configurations that are not wanted. Keeps all runs if `wanted` is empty.
void selectConfigurations(SArchiveContent& content, const std::vector<std::wstring>& wanted)
{
    if (wanted.empty())
    {
        return;
    }
    checkConfigurations(content.runs, wanted);
    const auto isOther = [&wanted](const std::wstring& configuration) {
        return std::ranges::find(wanted, GetConfigurationName(configuration)) == wanted.end();
    };
    std::erase_if(content.runs, [&](const SRun& run) { return isOther(run.label.configuration); });
    std::erase_if(content.unreadable,
                  [&](const SUnreadableRun& run) { return std::ranges::all_of(run.configurations, isOther); });
}

std::vector<SAnalysis> analyze(const SArchiveContent& content, const SHistoryOptions& options, const SStepRules& rules)
{
    CStepStore store(options.archive, content.digest);
    std::vector<SAnalysis> analyses;
    for (auto& [configuration, runs] : groupRuns(content.runs, options.runs))
    {
        CTable table(content.names, runs);
        SStepAnalysis steps = store.Get(configuration, table, rules);
        analyses.push_back(Analyze(configuration, std::move(table), rules, std::move(steps)));
    }
    store.Save();
    return analyses;
}

void write(const std::wstring& path, const std::string& text)
{
    LbFileSystem::WriteWhole(path, [&text](const std::wstring& place) {
        LuStreamWriteBinaryFile file(place);
        file.Write(text.data(), text.size());
        file.Close();
    });
}

void print(const std::wstring& text)
{
    LbOs::WriteStandardOutput(LbEncoding::ToUtf8(text));
}

void printSummary(const std::vector<SAnalysis>& analyses, std::size_t newest)
{
    for (const SAnalysis& analysis : analyses)
    {
        const std::size_t runCount = analysis.table.GetRunCount();
        const std::size_t caseCount = analysis.table.GetRun(runCount - 1).cells.size();
        print(LbFormat(L"%s: %u %s, im neuesten %u %s\n", GetConfigurationName(analysis), runCount,
                       runCount == 1 ? L"Lauf" : L"Läufe", caseCount, caseCount == 1 ? L"Fall" : L"Fälle"));
        for (const SFindingKind& kind : GetFindingKinds())
        {
            if (const std::size_t count = GetFindings(analysis, kind, newest).size(); count > 0)
            {
                print(LbFormat(L"  %s: %d\n", kind.title, static_cast<int>(count)));
            }
        }
    }
}

/// True if all gates hold.
bool printGates(const std::vector<SGateResult>& gates)
{
    bool isGreen = true;
    for (const SGateResult& result : gates)
    {
        print(LbFormat(L"%s: %s (gezählt: %d)\n", result.gate.rule, result.holds ? L"erfüllt" : L"nicht erfüllt",
                       static_cast<int>(result.count)));
        for (std::size_t index = 0; !result.holds && index < result.cases.size(); ++index)
        {
            print(L"  " + result.cases[index] + L"\n");
        }
        isGreen = isGreen && result.holds;
    }
    return isGreen;
}

/// The indices of the cases that the user wants to see in all runs.
std::vector<std::uint32_t> findCases(const SArchiveContent& content, const std::vector<std::wstring>& names)
{
    std::vector<std::uint32_t> cases;
    for (const std::wstring& name : names)
    {
        const std::optional<std::uint32_t> found = FindCase(content.names, name);
        if (!found)
        {
            throw LbFormat(L"Kein Lauf des Archivs enthält den Testfall '%s'", name);
        }
        cases.push_back(*found);
    }
    return cases;
}

void printCases(const std::vector<SAnalysis>& analyses, const std::vector<std::uint32_t>& cases)
{
    for (const std::uint32_t caseIndex : cases)
    {
        for (const SAnalysis& analysis : analyses)
        {
            print(DescribeCase(analysis, caseIndex));
        }
    }
}

std::vector<std::wstring> getUnreadable(const SArchiveContent& content)
{
    std::vector<std::wstring> names;
    std::ranges::transform(content.unreadable, std::back_inserter(names), &SUnreadableRun::name);
    return names;
}

void printUnreadable(const std::vector<std::wstring>& unreadable)
{
    for (const std::wstring& name : unreadable)
    {
        print(LbFormat(L"Fehler: %s ist nicht lesbar und vielleicht der neueste Lauf: keine Bedingung ist erfüllt\n",
                       name));
    }
}

} // namespace

int Execute(const SHistoryOptions& options)
{
    if (options.archive.empty())
    {
        throw std::wstring(L"Der Befehl 'history' braucht den Ordner eines Archivs");
    }
    if (options.runs > c_MostRuns)
    {
        throw LbFormat(L"Die Option '--runs' erlaubt höchstens %u", c_MostRuns);
    }
    const SStepRules rules = getRules(options);
    std::vector<SGate> gates;
    std::ranges::transform(options.gates, std::back_inserter(gates), ReadGate);
    MoveLibraryLinesToErrors();
    SArchiveContent content = ReadArchive(options.archive);
    if (content.runs.empty())
    {
        throw LbFormat(L"Verzeichnis %s enthält keinen lesbaren Lauf", options.archive);
    }
    selectConfigurations(content, options.configurations);
    const std::vector<std::uint32_t> cases = findCases(content, options.cases);
    const std::vector<SAnalysis> analyses = analyze(content, options, rules);
    const SGateResults results = CheckGates(gates, analyses, options.since, getUnreadable(content));
    if (!options.html.empty())
    {
        write(options.html, MakePage(analyses, results, options.since));
    }
    if (!options.json.empty())
    {
        write(options.json, MakeJson(analyses, results, options.since, cases));
    }
    printSummary(analyses, options.since);
    printCases(analyses, cases);
    if (!gates.empty())
    {
        printUnreadable(results.unreadable);
    }
    return printGates(results.results) ? LuTestSuiteHost::c_Succeeded : LuTestSuiteHost::c_Failed;
}

} // namespace Runner

#include "testing/lutestsuiterunner/settings/commandline.h"

#include <algorithm>
#include <concepts>
#include <span>

#include "base/lbformat.h"
#include "base/lbvariant.h"
#include "testing/lutestsuiterunner/settings/optionreader.h"

namespace Runner
{

namespace
{

using Arguments = std::vector<std::wstring>;

/// The arguments after the command.
struct SArguments
{
    Arguments own;
    LibraryOptions library;
    Arguments all; ///< with the command
};

/// The first element of `arguments` is the command.
SArguments split(std::span<const std::wstring> arguments)
{
    const auto mark = std::ranges::find(arguments, L"--");
    return {Arguments(arguments.begin() + 1, mark),
            LibraryOptions(mark == arguments.end() ? mark : mark + 1, arguments.end()),
            Arguments(arguments.begin(), arguments.end())};
}

/// Reads a value such as "listed" or "random:7".
bool readOrder(const std::wstring& value, SRunOptions& options)
{
    constexpr std::pair<const wchar_t*, EOrder> c_Orders[] = {{L"listed", EOrder::Listed},
                                                              {L"failed-first", EOrder::FailedFirst},
                                                              {L"longest-first", EOrder::LongestFirst},
                                                              {L"random", EOrder::Random}};
    const std::wstring name = value.substr(0, value.find(L':'));
    const auto order = std::ranges::find_if(c_Orders, [&name](const auto& one) { return one.first == name; });
    if (order == std::end(c_Orders))
    {
        return false;
    }
    options.order = order->second;
    options.seed.reset();
    if (name.size() == value.size())
    {
        return true;
    }
    options.seed = LbVariant(value.substr(name.size() + 1)).ToUInt32();
    return options.seed && options.order == EOrder::Random;
}

/// Reads a value such as "2/5".
bool readShard(const std::wstring& value, SRunOptions& options)
{
    const std::size_t mark = std::min(value.find(L'/'), value.size());
    const std::optional<std::uint32_t> number = LbVariant(value.substr(0, mark)).ToUInt32();
    const std::optional<std::uint32_t> count = LbVariant(value.substr(std::min(mark + 1, value.size()))).ToUInt32();
    options.shard = number.value_or(0);
    options.shardCount = count.value_or(0);
    return options.shard >= 1 && options.shard <= options.shardCount;
}

/// The options that ordinary and distributed runs share.
void addSharedOptions(COptionReader& reader, SRunOptions& options)
{
    reader.AddText({"--out", L"DIR", L"Ordner des Laufs: Journal und Reports (sonst lutestsuite-out)"}, options.out);
    reader.AddSwitch({"--force", nullptr, L"Ersetzt den Lauf, den der Ordner enthält"}, options.force);
    reader.AddText(
        {"--previous", L"DIR|XML", L"Früherer Lauf (Ordner, XML-Report) oder Archiv; daraus Zeiten und Fehler"},
        options.previous);
    reader.AddSwitch({"--only-failed", nullptr, L"Nur Testfälle, die im früheren Lauf fehlgeschlagen sind"},
                     options.onlyFailed);
    reader.AddNumber({"--retries", L"N", L"Wiederholt fehlgeschlagene Testfälle bis zu N mal"}, 0, options.retries);
    reader.AddSwitch({"--allow-flaky", nullptr, L"Testfälle, die erst bei einer Wiederholung bestehen, sind nicht rot"},
                     options.allowFlaky);
    reader.AddSwitch({"--confirm", nullptr, L"Wiederholt fehlgeschlagene Testfälle einmal, jeden im eigenen Prozess"},
                     options.confirm);
    reader.AddText(
        {"--core", L"DIR", L"Ordner für Speicherabbilder von Testfällen, die in -x oder -s abstürzen oder hängen"},
        options.core);
    reader.AddText({"--quarantine", L"DATEI", L"Muster von Testfällen, die nie rot sind; eins je Zeile"},
                   options.quarantine);
    reader.AddNumber({"--min-cases", L"N", L"Rot bei weniger als N Testfällen (sonst 1)"}, 0, options.minCases);
    reader.AddSwitch(
        {"--require-all-modules", nullptr,
         L"Rot, wenn ein Modul hinter --dll fehlt, irgendeins nicht lädt oder einer Suite der Ordner fehlt"},
        options.requireAllModules);
}

void addOptions(COptionReader& reader, SRunOptions& options)
{
    addSharedOptions(reader, options);
    reader.AddValue(
        {"--order", L"REIHENFOLGE", L"listed (wie gelistet), failed-first, longest-first oder random[:ZAHL]"},
        L"listed, failed-first, longest-first oder random[:ZAHL]",
        [&options](const std::wstring& value) { return readOrder(value, options); });
    reader.AddValue({"--shard", L"K/N", L"Nur Teil K von N; alle Teile zusammen sind die Auswahl"},
                    L"K/N mit K von 1 bis N",
                    [&options](const std::wstring& value) { return readShard(value, options); });
    reader.AddSwitchOrNumber(
        {"--fail-fast", L"[=N]", L"Bricht nach N fehlgeschlagenen Testfällen ab, sonst nach einem"}, 1,
        options.failFast);
    // Only the tasks of 'submit' use this option: it runs the shard whose plan is in --out, or the rest of that shard.
    reader.AddHiddenSwitch("--planned", options.planned);
}

void addOptions(COptionReader& reader, SSubmitOptions& options)
{
    addSharedOptions(reader, options.run);
    reader.AddValue({"--engine", L"ART", ListEngines(/*withHelp*/ true).c_str()}, ListEngines(/*withHelp*/ false),
                    [&options](const std::wstring& value) {
                        options.engine = value;
                        return IsEngine(value);
                    });
    reader.AddNumber({"--shards", L"N", L"Zahl der Teile (sonst die der Prozessoren hier)"}, 1, options.shards);
    reader.AddTexts({"--sbatch", L"OPTION", L"Option für sbatch, mehrfach: --sbatch=--partition=lang"}, options.sbatch);
    reader.AddSwitch({"--detach", nullptr, L"Wartet nicht auf das Ende"}, options.detach);
    reader.SetFooter(L"Ein verlorener Teil wird neu vergeben: ohne neues Ergebnis höchstens dreimal hintereinander,\n"
                     L"insgesamt wird ein Teil höchstens 100-mal vergeben.");
}

template<typename Options>
requires std::same_as<Options, SStatusOptions> || std::same_as<Options, SWaitOptions> ||
    std::same_as<Options, SCancelOptions>
void addOptions(COptionReader& reader, Options& options)
{
    reader.AddArgument({"DIR", nullptr, L"Ordner des verteilten Laufs"}, options.directory);
}

void addOptions(COptionReader& reader, SResumeOptions& options)
{
    reader.AddArgument({"DIR", nullptr, L"Ordner des Laufs"}, options.directory);
    reader.AddSwitch({"--confirm", nullptr, L"Wiederholt fehlgeschlagene Testfälle einmal, jeden im eigenen Prozess"},
                     options.confirm);
}

void addOptions(COptionReader& reader, SCaseOptions& options)
{
    reader.AddArgument({"NAME", nullptr, L"Ordner/Klasse:Fall wie in den Reports, oder Klasse:Fall"}, options.name);
    reader.SetFooter(L"Status: 0 bestanden; 11 Fehler, 12 Exception, 13 keine Testdaten, 14 Unterschied,\n"
                     L"15 Absturz oder unbekannt, 16 Testfall nicht gefunden, 17 abgebrochen, 18 Zeitlimit;\n"
                     L"77 deaktiviert oder übersprungen; 2 falscher Aufruf; 130 und 143 nach Strg-C und SIGTERM.\n"
                     L"Ohne -x hinter \"--\" läuft der Testfall in diesem Prozess: stürzt er ab, hat der Prozess\n"
                     L"den Status des Absturzes (134 nach abort); ruft er exit, den Status 2.");
}

void addOptions(COptionReader& reader, SListOptions& options)
{
    reader.AddSwitch({"--json", nullptr, L"Ausgabe als JSON"}, options.json);
    reader.AddText({"--ctest", L"DATEI", L"Schreibt statt der Ausgabe ein Skript für lutestsuite_discover_tests"},
                   options.ctest);
}

void addOptions(COptionReader& reader, SReportOptions& options)
{
    reader.AddArgument({"DIR", nullptr, L"Ordner des Laufs"}, options.directory);
}

void addOptions(COptionReader& reader, SMergeOptions& options)
{
    reader.AddArguments({"DIR", nullptr, L"Ordner der Läufe, die Teile eines Laufs sind"}, options.directories);
    reader.AddText({"--out", L"DIR", L"Ordner des ganzen Laufs (sonst lutestsuite-out)"}, options.out);
    reader.AddSwitch({"--force", nullptr, L"Ersetzt den Lauf, den der Ordner enthält"}, options.force);
}

void addOptions(COptionReader& reader, SHistoryOptions& options)
{
    reader.AddArgument({"DIR", nullptr, L"Ordner des Archivs: XML-Reports und Ordner von Läufen"}, options.archive);
    reader.AddText({"--html", L"DATEI", L"Seite schreiben"}, options.html);
    reader.AddText({"--json", L"DATEI", L"Befunde als JSON schreiben"}, options.json);
    reader.AddTexts({"--gate", L"REGEL", L"Bedingung, mehrfach: new-failures=0, slower<5, missing=0, ..."},
                    options.gates);
    reader.AddTexts({"--configuration", L"NAME", L"nur diese Konfiguration auswerten, mehrfach (sonst alle)"},
                    options.configurations);
    reader.AddTexts({"--case", L"NAME", L"Ergebnisse und Zeiten von Klasse:Fall in allen Läufen, mehrfach"},
                    options.cases);
    reader.AddNumber({"--runs", L"N", L"nur die neuesten N Läufe einer Konfiguration (100; höchstens 200)"}, 1,
                     options.runs);
    reader.AddNumber({"--since", L"N", L"nur, was in den neuesten N Läufen begann (0: alles)"}, 0, options.since);
    reader.AddText({"--alarm-rate", L"ZAHL", L"Wahrscheinlichkeit eines Fehlalarms, 0.001 bis 0.5 (0.05)"},
                   options.alarmRate);
    reader.AddText({"--min-change", L"PROZENT", L"kleinste gemeldete Änderung von Zeit und Speicher (3)"},
                   options.smallestChange);
    reader.AddNumber({"--reshuffles", L"N", L"Probe mit N neu gemischten Archiven (20)"}, 0, options.reshuffles);
    reader.AddNumber({"--seed", L"N", L"Startwert dieser Probe (1)"}, 0, options.seed);
}

void addOptions(COptionReader& /*reader*/, SFoldersOptions& /*options*/) {}

void addOptions(COptionReader& reader, SReviewOptions& options)
{
    reader.AddArgument({"DIR", nullptr, L"Datenverzeichnis oder ein Ordner darin"}, options.directory);
    reader.AddSwitchOrText(
        {"--diff", L"[=DATEI]", L"Zeigt je Änderung die Unterschiede einer Datei, oder alle dieser Referenz"},
        options.diff, options.diffFile);
    reader.AddSwitchOrText({"--side-by-side", L"[=DATEI]", L"Wie --diff, aber nebeneinander, links die Referenz"},
                           options.sideBySide, options.sideBySideFile);
    reader.AddSwitchOrText({"--files", L"[=KENNUNG]", L"Listet die Referenzen aller Änderungen, oder die von einer"},
                           options.files, options.filesOf);
    reader.AddTexts({"--accept", L"WAS",
                     L"Übernimmt eine Änderung (Kennung), eine Referenz (Pfad) oder alle (all); für mehrere mehrfach"},
                    options.accept);
    reader.AddTexts({"--reject", L"WAS", L"Verwirft, was empfangen wurde; Werte wie bei --accept"}, options.reject);
    reader.AddSwitch({"--accept-empty", nullptr, L"Erlaubt, dass Referenzen danach leer sind"}, options.acceptEmpty);
    reader.AddSwitch({"--ci", nullptr, L"Entscheidet nichts; Status 1, wenn etwas zu entscheiden ist"}, options.ci);
}

template<typename Options>
Command readOptions(COptionReader& reader, const SArguments& arguments)
{
    Options options;
    addOptions(reader, options);
    if (!reader.Read(arguments.own))
    {
        return SHelp{reader.GetHelp()};
    }
    if constexpr (requires { options.library; })
    {
        options.library = arguments.library;
    }
    if constexpr (requires { options.arguments; })
    {
        options.arguments = arguments.all;
    }
    if constexpr (requires { options.run; })
    {
        options.run.library = arguments.library;
        options.run.arguments = arguments.all;
    }
    return options;
}

/// A row of the table of commands.
struct SCommandRow
{
    const wchar_t* name;
    const wchar_t* purpose;
    bool takesLibraryOptions;
    Command (*read)(COptionReader& reader, const SArguments& arguments);
};

constexpr SCommandRow c_Commands[] = {
    {L"run", L"Führt die Auswahl aus und schreibt Journal und Reports.", true, readOptions<SRunOptions>},
    {L"resume", L"Setzt einen abgebrochenen Lauf fort.", false, readOptions<SResumeOptions>},
    {L"submit", L"Verteilt die Auswahl auf Prozesse oder auf einen Cluster.", true, readOptions<SSubmitOptions>},
    {L"wait", L"Wartet auf das Ende eines verteilten Laufs und vergibt Verlorenes neu.", false,
     readOptions<SWaitOptions>},
    {L"status", L"Zeigt, wie weit ein verteilter Lauf ist.", false, readOptions<SStatusOptions>},
    {L"cancel", L"Bricht einen verteilten Lauf ab.", false, readOptions<SCancelOptions>},
    {L"report", L"Schreibt die Reports eines Laufs aus seinem Journal.", false, readOptions<SReportOptions>},
    {L"merge", L"Fügt die Teile eines Laufs zusammen.", false, readOptions<SMergeOptions>},
    {L"list", L"Listet die ausgewählten Testfälle.", true, readOptions<SListOptions>},
    {L"case", L"Führt einen Testfall aus und zeigt seine Meldungen.", true, readOptions<SCaseOptions>},
    {L"history", L"Zeigt, was sich in einem Archiv von Läufen geändert hat.", false, readOptions<SHistoryOptions>},
    {L"folders", L"Legt Ordner für Testklassen an, die keine Dateien brauchen.", true, readOptions<SFoldersOptions>},
    {L"review", L"Vergleicht Referenzen mit dem, was Testfälle stattdessen erzeugt haben.", false,
     readOptions<SReviewOptions>},
};

std::wstring getHelp()
{
    std::wstring text = L"Aufruf: LuTestSuiteRunner BEFEHL [Optionen] -- [Optionen von LuTestSuiteCLI]\n\nBefehle:\n";
    for (const SCommandRow& row : c_Commands)
    {
        text += LbFormat(L"  %-10s%s\n", row.name, row.purpose);
    }
    return text + L"\nLuTestSuiteRunner BEFEHL -h zeigt die Optionen eines Befehls,\n"
                  L"LuTestSuiteCLI -h die Optionen hinter \"--\".\n";
}

} // namespace

Command ReadCommandLine(const std::vector<std::wstring>& arguments)
{
    const std::wstring name = arguments.size() < 2 ? L"" : arguments[1];
    if (name.empty() || name == L"-h" || name == L"--help")
    {
        return SHelp{getHelp()};
    }
    const auto row = std::ranges::find_if(c_Commands, [&name](const SCommandRow& other) { return other.name == name; });
    if (row == std::end(c_Commands))
    {
        throw LbFormat(L"Unbekannter Befehl '%s'; LuTestSuiteRunner -h zeigt die Befehle", name);
    }
    const SArguments own = split(std::span(arguments).subspan(1));
    if (!row->takesLibraryOptions && !own.library.empty())
    {
        throw LbFormat(L"Der Befehl '%s' erlaubt keine Optionen hinter '--'", name);
    }
    COptionReader reader(name, row->purpose, row->takesLibraryOptions);
    return row->read(reader, own);
}

} // namespace Runner

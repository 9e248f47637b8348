#include "testing/lutestsuiterunner/settings/commandline.h"

#include <algorithm>
#include <span>

#include "base/lbformat.h"
#include "testing/lutestsuiterunner/settings/optionreader.h"

namespace Runner
{

namespace
{

using Arguments = std::vector<std::wstring>;

/// The arguments behind the command.
struct SArguments
{
    Arguments own;
    LibraryOptions library;
};

SArguments split(std::span<const std::wstring> arguments)
{
    const auto mark = std::ranges::find(arguments, L"--");
    return {Arguments(arguments.begin(), mark),
            LibraryOptions(mark == arguments.end() ? mark : mark + 1, arguments.end())};
}

void addOptions(COptionReader& reader, SListOptions& options)
{
    reader.AddSwitch({"--json", nullptr, L"Ausgabe als JSON"}, options.json);
}

void addOptions(COptionReader& reader, SReportOptions& options)
{
    reader.AddArgument({"DIR", nullptr, L"Ordner des Laufs"}, options.directory);
}

void addOptions(COptionReader& reader, SMergeOptions& options)
{
    reader.AddArguments({"DIR", nullptr, L"Ordner der Läufe, die Teile eines Laufs sind"}, options.directories);
    reader.AddText({"--out", L"DIR", L"Ordner des ganzen Laufs (sonst lutestsuite-out)"}, options.out);
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
    {L"list", L"Listet die ausgewählten Fälle.", true, readOptions<SListOptions>},
    {L"report", L"Schreibt die Reports eines Laufs aus seinem Journal.", false, readOptions<SReportOptions>},
    {L"merge", L"Fügt die Teile eines Laufs zusammen.", false, readOptions<SMergeOptions>},
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
    const SArguments own = split(std::span(arguments).subspan(2));
    if (!row->takesLibraryOptions && !own.library.empty())
    {
        throw LbFormat(L"Der Befehl '%s' nimmt keine Optionen hinter '--'", name);
    }
    COptionReader reader(name, row->purpose, row->takesLibraryOptions);
    return row->read(reader, own);
}

} // namespace Runner

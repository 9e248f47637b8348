#include "testing/lutestsuiterunner/settings/commandline.h"

#include <gtest/gtest.h>

#include "base/lbencoding.h"

namespace
{

Runner::Command Read(std::vector<std::wstring> arguments)
{
    arguments.insert(arguments.begin(), L"LuTestSuiteRunner");
    return Runner::ReadCommandLine(arguments);
}

std::wstring GetError(const std::vector<std::wstring>& arguments)
{
    try
    {
        Read(arguments);
    }
    catch (const std::wstring& message)
    {
        return message;
    }
    return L"(none)";
}

TEST(RunnerCommandLine, ListsTheCommandsIfNoArgumentIsGiven)
{
    const auto help = std::get<Runner::SHelp>(Read({}));

    EXPECT_NE(help.text.find(L"Aufruf: LuTestSuiteRunner BEFEHL"), std::wstring::npos);
    EXPECT_NE(help.text.find(L"\n  list "), std::wstring::npos);
}

TEST(RunnerCommandLine, HidesTheInternalSwitchPlannedFromTheHelp)
{
    const auto help = std::get<Runner::SHelp>(Read({L"run", L"-h"}));

    EXPECT_NE(help.text.find(L"--shard"), std::wstring::npos);
    EXPECT_EQ(help.text.find(L"--planned"), std::wstring::npos);
    EXPECT_TRUE(std::get<Runner::SRunOptions>(Read({L"run", L"--planned"})).planned);
}

TEST(RunnerCommandLine, ShowsTheOptionsOfACommandInGerman)
{
    const auto help = std::get<Runner::SHelp>(Read({L"list", L"-h"}));

    EXPECT_EQ(help.text, L"Listet die ausgewählten Testfälle.\n\n"
                         L"Aufruf: LuTestSuiteRunner list [Optionen] -- [Optionen von LuTestSuiteCLI]\n\n"
                         L"Optionen:\n"
                         L"  -h,--help                   Diese Hilfe\n"
                         L"  --json                      Ausgabe als JSON\n"
                         L"  --ctest DATEI               Schreibt statt der Ausgabe ein Skript für "
                         L"lutestsuite_discover_tests\n\n");
}

TEST(RunnerCommandLine, PassesArgumentsAfterTheDoubleDashToTheLibrary)
{
    const auto options =
        std::get<Runner::SListOptions>(Read({L"list", L"--json", L"--", L"-d", L"Größen", L"--", L"-x"}));

    EXPECT_TRUE(options.json);
    EXPECT_EQ(options.library, (Runner::LibraryOptions{L"-d", L"Größen", L"--", L"-x"}));
}

TEST(RunnerCommandLine, ShowsTheRegisteredEngines)
{
    const auto help = std::get<Runner::SHelp>(Read({L"submit", L"-h"}));

    EXPECT_NE(help.text.find(L"local (Prozesse dieses Rechners, Vorgabe) oder slurm (Tasks eines Clusters mit Slurm)"),
              std::wstring::npos)
        << LbEncoding::ToUtf8(help.text);
    EXPECT_EQ(std::get<Runner::SSubmitOptions>(Read({L"submit", L"--engine", L"slurm"})).engine, L"slurm");
    EXPECT_EQ(std::get<Runner::SSubmitOptions>(Read({L"submit"})).engine, L"local");
    EXPECT_EQ(GetError({L"submit", L"--engine", L"pbs"}),
              L"Der Wert 'pbs' der Option '--engine' ist falsch: erwartet wird local oder slurm");
}

TEST(RunnerCommandLine, RefusesUnknownCommands)
{
    EXPECT_EQ(GetError({L"lauf"}), L"Unbekannter Befehl 'lauf'; LuTestSuiteRunner -h zeigt die Befehle");
}

TEST(RunnerCommandLine, NamesUnknownArguments)
{
    EXPECT_EQ(GetError({L"report", L"out", L"--jason", L"Maß"}), L"Unbekannte Argumente: '--jason', 'Maß'");
    EXPECT_EQ(GetError({L"run", L"-d", L"Maß"}),
              L"Unbekannte Argumente: '-d', 'Maß'; Optionen von LuTestSuiteCLI stehen hinter '--'");
}

TEST(RunnerCommandLine, RefusesAValueForASwitch)
{
    EXPECT_EQ(GetError({L"list", L"--json=ja"}), L"Die Option '--json' hat keinen Wert");
}

} // namespace

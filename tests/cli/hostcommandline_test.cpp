#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbpath.h"
#include "tests/support/golden.h"
#include "tests/support/hostprocess.h"
#include "tests/support/scopedfolder.h"

namespace
{

using Arguments = std::vector<std::wstring>;

/// A call without a run: its complete output and its exit status.
void ExpectAnswer(const Arguments& arguments, const std::string& output, int exitStatus)
{
    const SHostRun run = RunHost(arguments);

    EXPECT_EQ(run.output, ToPlatformLines(output));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, exitStatus);
}

void ExpectHelp(const Arguments& arguments)
{
    const SHostRun run = RunHost(arguments);

    ExpectGolden("help.txt", FromPlatformLines(run.output));
    EXPECT_EQ(run.output, ToPlatformLines(FromPlatformLines(run.output)));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST(HostCommandLine, ShowsHelpWithoutArguments)
{
    ExpectHelp({});
}

TEST(HostCommandLine, ShowsHelpForTheShortOption)
{
    ExpectHelp({L"-h"});
}

TEST(HostCommandLine, ShowsHelpForTheLongOption)
{
    ExpectHelp({L"--help"});
}

TEST(HostCommandLine, ShowsHelpDespiteOtherOptions)
{
    ExpectHelp({L"-q", L"-h", L"herrenlos", L"-d", L"gibt es nicht"});
}

TEST(HostCommandLine, RefusesAnUnknownOption)
{
    ExpectAnswer({L"--gibt-es-nicht"}, "Fehler: Unbekannte Option --gibt-es-nicht\n", 1);
}

TEST(HostCommandLine, RefusesAnUnknownOptionWithUmlautsAndBlanks)
{
    ExpectAnswer({L"--größe in µm"}, "Fehler: Unbekannte Option --größe in µm\n", 1);
}

TEST(HostCommandLine, RefusesAnUnknownOptionBesideARequestForHelp)
{
    ExpectAnswer({L"-h", L"-Z"}, "Fehler: Unbekannte Option -Z\n", 1);
}

TEST(HostCommandLine, RefusesAnOptionAndItsValueInOneArgument)
{
    ExpectAnswer({L"--xml=Report.xml"}, "Fehler: Unbekannte Option --xml=Report.xml\n", 1);
}

TEST(HostCommandLine, RefusesTheOptionThatOnlyTheHelpMentions)
{
    ExpectAnswer({L"--message-output-max", L"3"}, "Fehler: Unbekannte Option --message-output-max\n", 1);
}

TEST(HostCommandLine, RefusesAnOptionWithoutItsValueAtTheEnd)
{
    ExpectAnswer({L"-v", L"--data-dir"}, "Fehler: Option --data-dir erwartet zusätzlichen Wert\n", 1);
}

TEST(HostCommandLine, RefusesAnOptionInPlaceOfAValue)
{
    ExpectAnswer({L"-d", L"-v"}, "Fehler: Option -d erwartet zusätzlichen Wert\n", 1);
}

TEST(HostCommandLine, RefusesANegativeNumber)
{
    ExpectAnswer({L"-t", L"-1"}, "Fehler: Option -t erwartet zusätzlichen Wert\n", 1);
}

TEST(HostCommandLine, RefusesAnEmptyValue)
{
    ExpectAnswer({L"-i", L""}, "Fehler: Option -i erwartet zusätzlichen Wert\n", 1);
}

TEST(HostCommandLine, ListsStrayArguments)
{
    ExpectAnswer({L"erstes", L"-v", L"zweites mit Lücke"},
                 "Fehler: Unbekannte Argumente\n  erstes\n  zweites mit Lücke\n", 1);
}

TEST(HostCommandLine, RefusesAMissingDataDirectory)
{
    const ScopedFolder folder;
    const std::wstring missing = folder.GetPathOf(L"gibt es nicht (Größe)");

    ExpectAnswer({L"-d", missing},
                 LbEncoding::ToUtf8(L"Fehler: Datenverzeichnis '" + missing + LbPath::c_Separator +
                                    L"' konnte nicht gefunden werden\n"),
                 1);
}

TEST(HostCommandLine, RefusesAFileAsDataDirectory)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"Datei.txt", "kein Verzeichnis");

    ExpectAnswer({L"-d", file},
                 LbEncoding::ToUtf8(L"Fehler: Datenverzeichnis '" + file + LbPath::c_Separator +
                                    L"' konnte nicht gefunden werden\n"),
                 1);
}

} // namespace

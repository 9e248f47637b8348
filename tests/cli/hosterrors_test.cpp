// The host's output when an exception leaves the library: exit status 2 and one line on standard error.

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "tests/support/fulldevice.h"
#include "tests/support/hostprocess.h"
#include "tests/support/scopedfolder.h"

namespace
{

class HostErrors : public testing::Test
{
protected:
    SHostRun Run(const std::vector<std::wstring>& options, const SHostOptions& hostOptions = {}) const
    {
        std::vector<std::wstring> arguments = {L"-d", m_folder.GetPath()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunHost(arguments, hostOptions);
    }

    static void ExpectOneLine(const SHostRun& run, const std::string& line)
    {
        EXPECT_EQ(run.errors, ToPlatformLines(line));
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.exitStatus, 2);
    }

    /// Makes the host fail for lack of memory while it plans.
    SHostRun RunOutOfMemory(std::vector<std::wstring> options) const
    {
        m_folder.MakeFolder(L"CPassedModel");
        SHostOptions hostOptions;
        hostOptions.memoryLimitKilobytes = 600'000;
        options.insert(options.end(), {L"--dll", L"resultmodels", L"-r", L"20000000"});
        return Run(options, hostOptions);
    }

    ScopedFolder m_folder;
};

TEST_F(HostErrors, NameTheCaseThatEndedTheProcess)
{
    m_folder.MakeFolder(L"CCrashModel");
    for (const std::string name : {"exit", "quick_exit"})
    {
        const SHostRun run = Run({L"--dll", L"crashmodels", L"-i", L":" + LbEncoding::FromUtf8(name) + L"$"});

        EXPECT_EQ(run.errors,
                  ToPlatformLines("Fehler: Der Prozess wurde mitten im Aufruf beendet: 'CCrashModel:" + name + "'\n"));
        EXPECT_EQ(run.exitStatus, 2);
    }
}

TEST_F(HostErrors, NameOtherCasesThatRanWhenACaseEndedTheProcess)
{
    m_folder.MakeFolder(L"CCrashModel");

    const SHostRun run = Run({L"--dll", L"crashmodels", L"-i", L":wartet auf den Absturz$", L"-i",
                              L":Ende neben einem anderen$", L"-w", L"2"});

    EXPECT_EQ(run.errors, ToPlatformLines("Fehler: Der Prozess wurde mitten im Aufruf beendet: "
                                          "'CCrashModel:Ende neben einem anderen'\n"
                                          "Fehler: Zugleich in Arbeit: 'CCrashModel:wartet auf den Absturz'\n"));
    EXPECT_EQ(run.exitStatus, 2);
}

TEST_F(HostErrors, ReportLostOutput)
{
    SHostOptions hostOptions;
    hostOptions.outputDevice = GetFullDevice();
    if (hostOptions.outputDevice.empty())
    {
        GTEST_SKIP() << "no full device here";
    }
    m_folder.MakeFolder(L"CPassedModel");
    for (const std::vector<std::wstring>& options : {std::vector<std::wstring>{}, {L"-x"}, {L"-q"}})
    {
        std::vector<std::wstring> arguments = options;
        arguments.insert(arguments.end(), {L"--dll", L"resultmodels"});

        ExpectOneLine(Run(arguments, hostOptions),
                      "Fehler: Die Standardausgabe konnte nicht vollständig geschrieben werden\n");
    }
}

TEST_F(HostErrors, DoNotOccurWhenACaseEndsItsChild)
{
    m_folder.MakeFolder(L"CCrashModel");

    const SHostRun run = Run({L"-x", L"--dll", L"crashmodels", L"-i", L":exit$"});

    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(HostErrors, NameAnInvalidIncludePattern)
{
    ExpectOneLine(Run({L"-i", L"gut", L"-i", L"[offen"}), "Fehler: Ungültiger regulärer Ausdruck '[offen'\n");
}

TEST_F(HostErrors, NameAnInvalidExcludePattern)
{
    ExpectOneLine(Run({L"-e", L"(Größe"}), "Fehler: Ungültiger regulärer Ausdruck '(Größe'\n");
}

TEST_F(HostErrors, NameAnInvalidPatternThatIsComparedAsPlainText)
{
    ExpectOneLine(Run({L"--no-regex", L"-i", L"*.txt"}), "Fehler: Ungültiger regulärer Ausdruck '*.txt'\n");
}

TEST_F(HostErrors, ReportABrokenConfigurationFile)
{
    const ScopedFolder other;
    const std::wstring file = other.WriteFile(L"Auswahl.xml", "<Config><Tests></Config>");

    ExpectOneLine(Run({L"--include-config", file}), "Fehler in Config-File: XML-Syntax Fehler\n");
}

TEST_F(HostErrors, ReportAConfigurationFileOfAnotherKind)
{
    const ScopedFolder other;
    const std::wstring file = other.WriteFile(L"Auswahl.xml", "<ArchiveRun/>");

    ExpectOneLine(Run({L"--include-config", file}), "Fehler in Config-File: XML-Syntax Fehler\n");
}

TEST_F(HostErrors, NameAConfigurationFileThatIsADirectory)
{
    const ScopedFolder other;
    const std::wstring folder = other.MakeFolder(L"Auswahl.xml");

    ExpectOneLine(Run({L"--include-config", folder}),
                  "Fehler in Config-File: Datei " + LbEncoding::ToUtf8(folder) + " konnte nicht gelesen werden\n");
}

TEST_F(HostErrors, DoNotOccurForAMissingConfigurationFile)
{
    const SHostRun run = Run({L"--include-config", m_folder.GetPathOf(L"gibt es nicht.xml")});

    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostErrors, DoNotOccurForALongNameWithinThePatternLimit)
{
    m_folder.MakeFolder(L"CLongNameModel");

    const SHostRun run = Run({L"--dll", L"namemodels", L"-i", L"n+$", L"-c", L"1"});

    EXPECT_EQ(run.errors, "");
    EXPECT_NE(run.output.find("nnn... OK"), std::string::npos);
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostErrors, ShowCasesWithTooLongNamesAsUnknownErrors)
{
    m_folder.MakeFolder(L"CLongNameModel");

    const SHostRun run = Run({L"--dll", L"namemodels", L"-i", L"n+$"});

    EXPECT_EQ(run.errors, "");
    EXPECT_NE(run.output.find("\tCLongNameModel: 2 fehlerhafte Testfälle"), std::string::npos);
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(HostErrors, NameTheFunctionWhereTheLibraryFailed)
{
    if (!CanLimitHost())
    {
        GTEST_SKIP() << "memory cannot be limited here";
    }
    SHostOptions hostOptions;
    // This limit leaves too little address space for the stack that a pattern with a back-reference needs.
    hostOptions.memoryLimitKilobytes = 80'000;

    m_folder.MakeFolder(L"CLongNameModel");

    const SHostRun run = Run({L"--dll", L"namemodels", L"-i", L"(n)\\1"}, hostOptions);

    EXPECT_TRUE(run.errors.starts_with("Fehler: Ein Thread konnte nicht gestartet werden (process_linux, Zeile "))
        << run.errors;
    EXPECT_TRUE(run.errors.ends_with(", LbOs::RunOnStack)\n")) << run.errors;
    EXPECT_EQ(std::ranges::count(run.errors, '\n'), 1);
    EXPECT_EQ(run.exitStatus, 2);
}

TEST_F(HostErrors, ReportLackOfMemory)
{
    if (!CanLimitHost())
    {
        GTEST_SKIP() << "memory cannot be limited here";
    }
    ExpectOneLine(RunOutOfMemory({}), "Fehler: Nicht genügend Speicher\n");
}

TEST_F(HostErrors, ReportAnUnknownException)
{
    if (!CanLimitHost())
    {
        GTEST_SKIP() << "memory cannot be limited here";
    }
    ExpectOneLine(RunOutOfMemory({L"--dll", L"memoryhandlermodels"}), "Fehler: Unbekannte Ausnahme\n");
}

} // namespace

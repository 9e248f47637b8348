#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "tests/modules/outcomes.h"
#include "tests/support/golden.h"
#include "tests/support/hostprocess.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// Writes the per-user data with this "LastConfig.xml".
class CUserFolder
{
public:
    explicit CUserFolder(const std::string& lastConfig)
    {
        m_folder.WriteFile(L"LuTestSuite/Orvell/LastConfig.xml", lastConfig);
    }

    /// Options to start the host as this user, on both platforms.
    SHostOptions GetOptions() const
    {
        SHostOptions options;
        options.variables = {{L"XDG_DATA_HOME", m_folder.GetPath()}, {L"APPDATA", m_folder.GetPath()}};
        return options;
    }

private:
    ScopedFolder m_folder;
};

/// Runs over its own data directory, with the model modules loaded.
class HostRun : public testing::Test
{
protected:
    SHostRun Run(const std::vector<std::wstring>& options, const SHostOptions& hostOptions = {}) const
    {
        return RunOn(m_folder.GetPath(), options, hostOptions);
    }

    static SHostRun RunOn(const std::wstring& dataDir, const std::vector<std::wstring>& options,
                          const SHostOptions& hostOptions = {})
    {
        std::vector<std::wstring> arguments = {L"-d", dataDir, L"--dll", L"datasetmodels"};
        for (const wchar_t* module : models::c_Modules)
        {
            arguments.insert(arguments.end(), {L"--dll", module});
        }
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunHost(arguments, hostOptions);
    }

    /// Writes one unit test per level of folders, because the order inside a directory depends on the file system.
    void WriteManyOutcomes() const
    {
        m_folder.MakeFolder(L"CResultModel");
        m_folder.MakeFolder(L"weiter/CPassedModel");
        m_folder.MakeFolder(L"weiter/noch weiter/CSubtestExceptionModel");
        const std::wstring dataSets = L"weiter/noch weiter/Größen und Maße/CDataSetModel/";
        m_folder.WriteFile(dataSets + L"abgeschaltet.txt", "schlecht");
        m_folder.WriteFile(dataSets + L"anders.txt", "anders");
        m_folder.WriteFile(dataSets + L"leer.txt", "");
        m_folder.WriteFile(dataSets + L"mit Lücke.txt", "gut");
        m_folder.WriteFile(dataSets + L"schlecht.txt", "schlecht");
        m_folder.WriteFile(dataSets + L"#ExtraInfo.xml",
                           "<ExtraInfo><TestCase name=\"abge*\"><Enable>false</Enable></TestCase></ExtraInfo>");
    }

    ScopedFolder m_folder;
};

TEST_F(HostRun, PrintsEveryCaseAndASummary)
{
    WriteManyOutcomes();

    const SHostRun run = Run({});

    ExpectGolden("cli/run.txt", FromPlatformLines(run.output));
    EXPECT_EQ(run.output, ToPlatformLines(FromPlatformLines(run.output)));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(HostRun, PrintsRepetitionsAndTimesOnRequest)
{
    WriteManyOutcomes();

    const SHostRun run = Run({L"-r", L"2", L"-v", L"-i", L"CPassedModel", L"-i", L"CDataSetModel:a"});

    ExpectGolden("cli/repetitions.txt", NormalizeTimes(FromPlatformLines(run.output)));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(HostRun, SucceedsWhenEveryCasePassed)
{
    m_folder.MakeFolder(L"CPassedModel");

    const SHostRun run = Run({});

    EXPECT_EQ(run.output, ToPlatformLines("CPassedModel\n"
                                          "\teins... OK\n"
                                          "\tzwei mit Lücke... OK\n"
                                          "\n"
                                          "Zusammenfassung\n"
                                          "\tAusgeführt:\t1 Klasse, 2 Tests\n"
                                          "\tErfolgreich:\t1 Klasse, 2 Tests\n"));
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostRun, FailsWhenACaseFailed)
{
    m_folder.MakeFolder(L"CFailedModel");

    EXPECT_EQ(Run({}).exitStatus, 1);
}

TEST_F(HostRun, FailsWhenACaseExceedsItsTimeLimit)
{
    // The other cases must not reach the time limit on a busy machine.
    m_folder.WriteFile(L"CCrashModel/#ExtraInfo.xml",
                       "<ExtraInfo><TestCase name=\"*her\"><TimeOutSec>600</TimeOutSec></TestCase></ExtraInfo>");

    const SHostRun run = Run({L"--dll", L"crashmodels", L"-x", L"-t", L"1", L"-i", L":vorher$", L"-i",
                              L":Endlosschleife$", L"-i", L":nachher$"});

    ExpectGolden("cli/timeout.txt", FromPlatformLines(run.output));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(HostRun, SucceedsSilentlyWithoutUnitTests)
{
    const SHostRun run = Run({});

    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostRun, AcceptsDataDirectoriesWithUmlautsAndBlanks)
{
    m_folder.WriteFile(L"Größen und Maße/CDataSetModel/äöü ß.txt", "gut");

    const SHostRun run = RunOn(m_folder.GetPathOf(L"Größen und Maße"), {});

    EXPECT_EQ(run.output, ToPlatformLines("CDataSetModel\n"
                                          "\täöü ß.txt... OK\n"
                                          "\n"
                                          "Zusammenfassung\n"
                                          "\tAusgeführt:\t1 Klasse, 1 Test\n"
                                          "\tErfolgreich:\t1 Klasse, 1 Test\n"));
}

TEST_F(HostRun, PrintsNamesOfAnyScriptAsUtf8)
{
    m_folder.WriteFile(L"CDataSetModel/Ωμέγα \U0001F600.txt", "gut");

    const SHostRun run = Run({});

    EXPECT_NE(run.output.find("\tΩμέγα \xF0\x9F\x98\x80.txt... OK"), std::string::npos) << run.output;
}

TEST_F(HostRun, AcceptsPatternsWithUmlautsAndBlanks)
{
    m_folder.MakeFolder(L"CPassedModel");

    const SHostRun run = Run({L"-i", L"mit Lücke$"});

    EXPECT_NE(run.output.find("\tErfolgreich:\t1 Klasse, 1 Test"), std::string::npos) << run.output;
}

TEST_F(HostRun, MatchesPatternsAsPlainTextOnRequest)
{
    m_folder.WriteFile(L"CDataSetModel/a+b (1).txt", "gut");
    m_folder.WriteFile(L"CDataSetModel/a+b (1).txt.txt", "schlecht");

    const SHostRun run = Run({L"--no-regex", L"-i", L":a+b (1).txt"});

    EXPECT_NE(run.output.find("\ta+b (1).txt... OK"), std::string::npos) << run.output;
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostRun, RunsTheCasesThatAConfigurationFileLists)
{
    m_folder.MakeFolder(L"CPassedModel");
    m_folder.MakeFolder(L"CFailedModel");
    const ScopedFolder other;
    const std::wstring file = other.WriteFile(
        L"Auswahl.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                        "<Config><Tests><UnitTest name=\"CPassedModel\"><TestCase name=\"zwei mit Lücke\"/></UnitTest>"
                        "</Tests></Config>");

    const SHostRun run = Run({L"--include-config", file});

    EXPECT_EQ(run.output, ToPlatformLines("CPassedModel\n"
                                          "\tzwei mit Lücke... OK\n"
                                          "\n"
                                          "Zusammenfassung\n"
                                          "\tAusgeführt:\t1 Klasse, 1 Test\n"
                                          "\tErfolgreich:\t1 Klasse, 1 Test\n"));
}

TEST_F(HostRun, FindsARememberedDataDirectoryByItsNumber)
{
    m_folder.MakeFolder(L"CPassedModel");
    const CUserFolder user("<Config><DataDirHistory><Dir path=\"gibt es nicht\"/><Dir path=\"" +
                           LbEncoding::ToUtf8(m_folder.GetPath()) + "\"/></DataDirHistory></Config>");

    const SHostRun run = RunOn(L"1", {}, user.GetOptions());

    EXPECT_TRUE(run.output.starts_with(ToPlatformLines("CPassedModel\n\teins... OK\n"))) << run.output;
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostRun, ReportsABrokenHistoryOfDataDirectories)
{
    const CUserFolder user("<Config>");

    const SHostRun run = RunOn(L"0", {}, user.GetOptions());

    EXPECT_EQ(run.output, ToPlatformLines(LbEncoding::ToUtf8(
                              LbFormat(L"Fehler in Config-File: XML-Syntax Fehler\n"
                                       L"Fehler: Datenverzeichnis '0%c' konnte nicht gefunden werden\n",
                                       LbPath::c_Separator))));
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(HostRun, NamesTheDescriptionFileInWarnings)
{
    m_folder.MakeFolder(L"CPassedModel");
    const std::wstring file = m_folder.WriteFile(L"CPassedModel/#ExtraInfo.xml", "<ExtraInfo><offen></ExtraInfo>");

    const SHostRun run = Run({});

    EXPECT_TRUE(run.output.starts_with(
        ToPlatformLines("Warnung: XML-Syntax Fehler in Datei " + LbEncoding::ToUtf8(file) + ".\nCPassedModel\n")))
        << run.output;
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostRun, PrintsTheProcessThatRanACase)
{
    WriteManyOutcomes();

    const SHostRun run = Run({L"-x", L"-v"});

    ExpectGolden("cli/external.txt", FromPlatformLines(run.output));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(HostRun, PrintsTheProcessThatRanAnIsolatedCase)
{
    WriteManyOutcomes();

    const SHostRun run = Run({L"-s", L"-v"});

    ExpectGolden("cli/isolated.txt", FromPlatformLines(run.output));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(HostRun, PrintsTheThreadThatRanACase)
{
    WriteManyOutcomes();

    const SHostRun run = Run({L"-w", L"1", L"-v"});

    ExpectGolden("cli/parallel.txt", FromPlatformLines(run.output));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(HostRun, FindsTheDataOfExternalCasesFromAnyDirectory)
{
    m_folder.WriteFile(L"Größen und Maße/CDataSetModel/äöü ß.txt", "gut");
    SHostOptions options;
    options.workingDirectory = m_folder.GetPath();

    const SHostRun run = RunOn(L"Größen und Maße", {L"-x"}, options);

    EXPECT_TRUE(run.output.starts_with(ToPlatformLines("CDataSetModel\n\täöü ß.txt... OK\n"))) << run.output;
}

TEST_F(HostRun, HidesTheOutputOfExternalCases)
{
    m_folder.MakeFolder(L"CWideOutputModel");

    const SHostRun run = Run({L"-x", L"--dll", L"wideoutputmodels"});

    EXPECT_NE(run.output.find("\tFall... OK"), std::string::npos) << run.output;
    EXPECT_EQ(run.errors, "");
}

TEST_F(HostRun, WritesPlainTextWithoutATerminal)
{
    m_folder.MakeFolder(L"CFailedModel");

    EXPECT_EQ(Run({}).output.find('\x1b'), std::string::npos);
}

} // namespace

#include <regex>

#include <gtest/gtest.h>

#include "tests/lutestsuiterunner/cli/runnertest.h"

namespace
{

using RunnerCase = RunnerTest;

TEST_F(RunnerCase, ReturnsAnExitStatusForEachOutcome)
{
    m_folder.MakeFolder(L"data/unten/CResultModel");

    EXPECT_EQ(Run({L"case", L"CResultModel:bestanden"}).exitStatus, 0);
    EXPECT_EQ(Run({L"case", L"unten/CResultModel:fehlgeschlagen"}).exitStatus, 11);
    EXPECT_EQ(Run({L"case", L"CResultModel:eigene Ausnahme"}).exitStatus, 12);
    EXPECT_EQ(Run({L"case", L"CResultModel:keine Eingabe"}).exitStatus, 13);
    EXPECT_EQ(Run({L"case", L"CResultModel:abweichend"}).exitStatus, 14);
    EXPECT_EQ(Run({L"case", L"CResultModel:unbekannter Wert"}).exitStatus, 15);
}

TEST_F(RunnerCase, PrintsTheMessagesOfTheCase)
{
    m_folder.MakeFolder(L"data/CMessageModel");

    const SHostRun run = Run({L"case", L"CMessageModel:Fehler"});

    ExpectLine(run.output, "CMessageModel:Fehler: ");
    ExpectLine(run.output, "ERROR: 3 statt 4\n");
}

TEST_F(RunnerCase, PrintsAllLinesOfLongMessages)
{
    m_folder.MakeFolder(L"data/CTalkingModel");

    ExpectLine(Run({L"case", L"CTalkingModel:viele Zeilen"}).output, "INFO:  Zeile 99\n");
}

TEST_F(RunnerCase, ReturnsTheStatusOfAnUnknownErrorIfAChildCrashes)
{
    m_folder.MakeFolder(L"data/CCrashModel");

    EXPECT_EQ(Run({L"case", L"CCrashModel:abort"}, {L"-x"}).exitStatus, 15);
}

TEST_F(RunnerCase, PrintsTheTimeUntilTheTimeLimit)
{
    m_folder.WriteFile(L"data/CDurationModel/long.ms", "60000");

    const SHostRun run = Run({L"case", L"CDurationModel:long.ms"}, {L"-x", L"-t", L"1"});

    EXPECT_EQ(run.exitStatus, 18);
    EXPECT_TRUE(std::regex_search(run.output, std::regex("^CDurationModel:long.ms: .* \\([1-9][0-9]*\\.[0-9]s\\)")))
        << run.output;
}

TEST_F(RunnerCase, SkipsDisabledCases)
{
    m_folder.WriteFile(L"data/CPassedModel/#ExtraInfo.xml",
                       "<ExtraInfo><TestCase name=\"eins\"><Enable>false</Enable></TestCase></ExtraInfo>");

    const SHostRun run = Run({L"case", L"CPassedModel:eins"});

    EXPECT_EQ(run.exitStatus, 77);
    ExpectLine(run.output, "CPassedModel:eins: deaktiviert\n");
}

TEST_F(RunnerCase, FailsIfNoCaseHasTheGivenName)
{
    m_folder.MakeFolder(L"data/CPassedModel");

    const SHostRun run = Run({L"case", L"CPassedModel:drei"});

    EXPECT_EQ(run.exitStatus, 16);
    ExpectLine(run.errors, "Fehler: Die Auswahl enthält keinen Testfall 'CPassedModel:drei'");
}

TEST_F(RunnerCase, RefusesToRepeatTheCase)
{
    m_folder.MakeFolder(L"data/CPassedModel");

    const SHostRun run = Run({L"case", L"CPassedModel:eins"}, {L"-r", L"3"});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "Fehler: Die Option '-r' gibt es hier nicht: jeder Testfall wird einmal ausgeführt\n");
    EXPECT_EQ(Run({L"case", L"CPassedModel:eins"}, {L"-r", L"1"}).exitStatus, 0);
}

TEST_F(RunnerCase, NamesAMissingModuleIfItDoesNotFindTheCase)
{
    m_folder.MakeFolder(L"data/CPassedModel");

    const SHostRun run = Run({L"case", L"CAwayModel:eins"}, {L"--dll", L"gibtesnicht"});

    EXPECT_EQ(run.exitStatus, 16);
    ExpectLine(run.errors, "Fehler: " + DescribeMissingModule(L"gibtesnicht") + "\n");
    EXPECT_EQ(Run({L"case", L"CPassedModel:eins"}, {L"--dll", L"gibtesnicht"}).exitStatus, 0);
}

TEST_F(RunnerCase, RefusesAnAmbiguousCaseName)
{
    m_folder.MakeFolder(L"data/a/CPassedModel");
    m_folder.MakeFolder(L"data/b/CPassedModel");

    const SHostRun run = Run({L"case", L"CPassedModel:eins"});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "ist mehrdeutig");
    EXPECT_EQ(Run({L"case", L"b/CPassedModel:eins"}).exitStatus, 0);
}

TEST_F(RunnerCase, PrefersAFullNameToTheNameWithoutFolder)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    m_folder.MakeFolder(L"data/a/CPassedModel");

    const SHostRun run = Run({L"case", L"CPassedModel:eins"});

    EXPECT_EQ(run.exitStatus, 0);
    ExpectLine(run.output, "CPassedModel:eins: ");
    EXPECT_EQ(run.output.find("a/CPassedModel"), std::string::npos) << run.output;
}

} // namespace

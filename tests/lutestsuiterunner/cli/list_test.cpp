#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "tests/lutestsuiterunner/cli/runnerprocess.h"
#include "tests/support/brokenmodule.h"
#include "tests/support/scopedfolder.h"

namespace
{

class RunnerList : public testing::Test
{
protected:
    SHostRun List(const std::vector<std::wstring>& own, const std::vector<std::wstring>& library = {}) const
    {
        std::vector<std::wstring> arguments = {L"list"};
        arguments.insert(arguments.end(), own.begin(), own.end());
        for (const wchar_t* argument : {L"--", L"-d", m_folder.GetPath().c_str(), L"--dll", L"datasetmodels"})
        {
            arguments.emplace_back(argument);
        }
        arguments.insert(arguments.end(), library.begin(), library.end());
        return RunRunner(arguments);
    }

    void WriteDataSets() const
    {
        m_folder.WriteFile(L"CDataSetModel/äöü.txt", "gut");
        m_folder.WriteFile(L"CDataSetModel/zuletzt.txt", "gut");
        m_folder.WriteFile(L"CDataSetModel/#ExtraInfo.xml",
                           "<ExtraInfo><TestCase name=\"zu*\"><Enable>false</Enable><TimeOutSec>7</TimeOutSec>"
                           "</TestCase></ExtraInfo>");
    }

    ScopedFolder m_folder;
};

TEST_F(RunnerList, ShowsCasesWithTheirParameters)
{
    WriteDataSets();

    const SHostRun run = List({});

    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_EQ(run.errors, "");
    const std::string text = FromPlatformLines(run.output);
    EXPECT_NE(text.find("CDataSetModel (datasetmodels."), std::string::npos) << text;
    const auto getFile = [this](const wchar_t* name) {
        return " Datei=" + LbEncoding::ToUtf8(m_folder.GetPathOf(std::wstring(L"CDataSetModel/") + name)) + "\n";
    };
    EXPECT_NE(text.find("    äöü.txt" + getFile(L"äöü.txt")), std::string::npos) << text;
    EXPECT_NE(text.find("    zuletzt.txt (deaktiviert) TimeOutSec=7" + getFile(L"zuletzt.txt")), std::string::npos)
        << text;
    EXPECT_NE(text.find("Klassen: 1, Fälle: 2, davon deaktiviert: 1\n"), std::string::npos) << text;
}

TEST_F(RunnerList, WritesJson)
{
    WriteDataSets();

    const auto list = nlohmann::json::parse(List({L"--json"}).output);

    const auto& unitTest = list.at("unitTests").at(0);
    EXPECT_EQ(unitTest.at("class"), "CDataSetModel");
    EXPECT_EQ(unitTest.at("folder"), LbEncoding::ToUtf8(m_folder.GetPathOf(L"CDataSetModel/")));
    // The file system determines the order within a folder.
    const auto& cases = unitTest.at("cases");
    const std::size_t first = cases.at(0).at("name") == "äöü.txt" ? 0 : 1;
    EXPECT_EQ(cases.at(first),
              (nlohmann::json{{"name", "äöü.txt"},
                              {"disabled", false},
                              {"file", LbEncoding::ToUtf8(m_folder.GetPathOf(L"CDataSetModel/äöü.txt"))}}));
    EXPECT_EQ(cases.at(1 - first).at("disabled"), true);
    EXPECT_EQ(cases.at(1 - first).at("parameters").at("TimeOutSec"), 7);
}

TEST_F(RunnerList, WarnsOfAMissingModule)
{
    WriteDataSets();

    const SHostRun run = List({L"--json"}, {L"--dll", L"gibtesnicht"});

    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_EQ(FromPlatformLines(run.errors), "Warnung: " + DescribeMissingModule(L"gibtesnicht") + "\n");
    EXPECT_EQ(nlohmann::json::parse(run.output).at("unitTests").size(), 1U);
}

TEST_F(RunnerList, WritesAScriptForCTest)
{
    WriteDataSets();
    const std::wstring script = m_folder.GetPathOf(L"cases.cmake");

    EXPECT_EQ(List({L"--ctest", script}).exitStatus, 0);

    const std::string text = LbFileSystem::ReadFile8Bit(script);
    EXPECT_NE(text.find("lutestsuite_add_case([[CDataSetModel:äöü.txt]] [[CDataSetModel]] [[]] 0 \"\" [["),
              std::string::npos)
        << text;
}

TEST_F(RunnerList, WritesNoScriptForCTestIfAModuleIsMissing)
{
    WriteDataSets();
    const std::wstring script = m_folder.GetPathOf(L"cases.cmake");

    const SHostRun run = List({L"--ctest", script}, {L"--dll", L"gibtesnicht"});

    EXPECT_EQ(FromPlatformLines(run.errors), "Fehler: " + DescribeMissingModule(L"gibtesnicht") + "\n");
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_FALSE(LbFileSystem::IsFile(script));
}

TEST_F(RunnerList, WritesNoScriptForCTestIfRepetitionsAreRequested)
{
    WriteDataSets();
    const std::wstring script = m_folder.GetPathOf(L"cases.cmake");

    const SHostRun run = List({L"--ctest", script}, {L"-r", L"3"});

    EXPECT_NE(run.errors.find("Fehler: Die Option '-r' gibt es hier nicht"), std::string::npos) << run.errors;
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_FALSE(LbFileSystem::IsFile(script));
}

TEST_F(RunnerList, WritesNoScriptForCTestIfAModuleCannotBeLoaded)
{
    WriteDataSets();
    const CBrokenModule broken;
    const std::wstring script = m_folder.GetPathOf(L"cases.cmake");

    const SHostRun run = List({L"--ctest", script}, {L"--dll", broken.GetName()});

    EXPECT_NE(
        run.errors.find("Fehler: Das Modul '" + LbEncoding::ToUtf8(broken.GetName()) + "' konnte nicht geladen werden"),
        std::string::npos)
        << run.errors;
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_FALSE(LbFileSystem::IsFile(script));
}

TEST_F(RunnerList, KeepsWarningsOfTheLibraryOutOfStandardOutput)
{
    const SHostRun run = RunRunner({L"list", L"--json", L"--", L"-d", m_folder.GetPathOf(L"fehlt")});

    EXPECT_EQ(run.output, "");
    EXPECT_NE(run.errors.find("konnte nicht gefunden werden"), std::string::npos) << run.errors;
    EXPECT_NE(run.errors.find("Fehler: Falsche Optionen hinter '--': "), std::string::npos) << run.errors;
    EXPECT_EQ(run.exitStatus, 2);
}

TEST_F(RunnerList, RefusesTheQueryModeOfLuTestSuiteCLI)
{
    const SHostRun run = RunRunner({L"list", L"--", L"-d", m_folder.GetPath(), L"-q"});

    EXPECT_EQ(FromPlatformLines(run.errors),
              "Fehler: Die Option '--query-mode' wählt eine Betriebsart, die nur LuTestSuiteCLI hat\n");
    EXPECT_EQ(run.exitStatus, 2);
}

TEST_F(RunnerList, NeedsADataDirectory)
{
    EXPECT_EQ(FromPlatformLines(RunRunner({L"list"}).errors),
              "Fehler: Hinter '--' fehlen die Optionen der Auswahl, zumindest '-d DATENVERZEICHNIS'\n");
}

TEST(RunnerHelp, IsPrintedIfNoArgumentIsGiven)
{
    const SHostRun run = RunRunner({});

    EXPECT_NE(run.output.find("Befehle:"), std::string::npos);
    EXPECT_EQ(run.exitStatus, 0);
}

} // namespace

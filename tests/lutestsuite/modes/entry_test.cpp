#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/os/heapfunctions.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/runtest.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// Tests of the function that hosts call.
class RunCommandLine : public RunTest
{
protected:
    bool Call(const std::vector<std::wstring>& arguments)
    {
        std::vector<const wchar_t*> vector = {L"LuTestSuiteCLI"};
        for (const std::wstring& argument : arguments)
        {
            vector.push_back(argument.c_str());
        }
        return LuTestSuiteUtils::RunCommandLine(m_environment, static_cast<int>(vector.size()), vector.data());
    }

    std::string GetUtf8() const { return LbEncoding::ToUtf8(m_output.GetText()); }

    /// The options that run the cases of the test's folder, followed by `more`.
    std::vector<std::wstring> GetRunOptions(std::vector<std::wstring> more = {}) const
    {
        std::vector<std::wstring> options = {L"-d",    m_folder.GetPath(), L"--dll", L"datasetmodels",
                                             L"--dll", L"resultmodels"};
        options.insert(options.end(), more.begin(), more.end());
        return options;
    }

    ScopedFolder m_folder;
};

TEST_F(RunCommandLine, IsTrueWhenEveryCasePassed)
{
    m_folder.MakeFolder(L"CPassedModel");

    EXPECT_TRUE(Call(GetRunOptions()));
}

TEST_F(RunCommandLine, IsFalseWhenACaseFailed)
{
    m_folder.MakeFolder(L"CPassedModel");
    m_folder.MakeFolder(L"CFailedModel");

    EXPECT_FALSE(Call(GetRunOptions()));
}

TEST_F(RunCommandLine, IsFalseWhenInputIsMissing)
{
    m_folder.WriteFile(L"CDataSetModel/leer.txt", "");

    EXPECT_FALSE(Call(GetRunOptions()));
}

TEST_F(RunCommandLine, IsFalseWhenACaseTookTooLong)
{
    // Only the endless loop may reach its limit, even on a busy machine.
    m_folder.WriteFile(L"CPassedModel/#ExtraInfo.xml",
                       "<ExtraInfo><TestCase name=\"*\"><TimeOutSec>600</TimeOutSec></TestCase></ExtraInfo>");
    m_folder.MakeFolder(L"CCrashModel");

    EXPECT_FALSE(Call(GetRunOptions(
        {L"--dll", L"crashmodels", L"-x", L"-t", L"1", L"-i", L"CPassedModel", L"-i", L":Endlosschleife$"})));
    EXPECT_NE(GetUtf8().find("\tErfolgreich:\t1 Klasse, 2 Tests\n"), std::string::npos) << GetUtf8();
}

/// One case leaks memory; nothing else is wrong.
TEST_F(RunCommandLine, IsTrueWhenACaseLeakedMemory)
{
    if (LbOs::GetHeapFunctions().malloc == nullptr)
    {
        GTEST_SKIP() << "this process does not use the heap of the shared run-time";
    }
    m_folder.MakeFolder(L"CPassedModel");
    m_folder.MakeFolder(L"CHeapModel");

    EXPECT_TRUE(Call(GetRunOptions({L"--dll", L"heapmodels", L"--track-heap", L"-i", L"CPassedModel", L"-i",
                                    L":wächst um 16 Bytes$", L"-i", L":gibt alles zurück$"})));
    EXPECT_NE(GetUtf8().find("WARNUNG (Ein Speicheranstieg von 16 Bytes wurde entdeckt)"), std::string::npos)
        << GetUtf8();
}

TEST_F(RunCommandLine, IsTrueWhenNothingRan)
{
    EXPECT_TRUE(Call(GetRunOptions()));
    EXPECT_EQ(GetUtf8(), "");
}

TEST_F(RunCommandLine, IsTrueForZeroRepetitions)
{
    m_folder.MakeFolder(L"CFailedModel");

    EXPECT_TRUE(Call(GetRunOptions({L"-r", L"0"})));
}

TEST_F(RunCommandLine, IsFalseForRefusedArguments)
{
    EXPECT_FALSE(Call({L"--unbekannt"}));
}

TEST_F(RunCommandLine, ShowsOnlyTheHelpWithoutArguments)
{
    EXPECT_TRUE(Call({}));
    EXPECT_EQ(GetUtf8(), LbEncoding::ToUtf8(LuTestSuiteUtils::GetCommandLineHelp()));
}

TEST_F(RunCommandLine, ShowsOnlyTheHelpDespiteOtherModes)
{
    m_folder.MakeFolder(L"CFailedModel");

    EXPECT_TRUE(Call(GetRunOptions(
        {L"-h", L"-q", L"--list-duplicates", L"--list-disabled", L"--archive-run", L"a:b", L"--diff-in", L"a.xml"})));
    EXPECT_EQ(GetUtf8(), LbEncoding::ToUtf8(LuTestSuiteUtils::GetCommandLineHelp()));
}

TEST_F(RunCommandLine, OnlyComparesReportsDespiteOtherModes)
{
    m_folder.MakeFolder(L"CFailedModel");
    const std::wstring report = m_folder.WriteFile(L"a.xml", "<testsuite/>");

    EXPECT_TRUE(Call(GetRunOptions({L"--diff-in", report, L"--diff-in", report, L"-q", L"--no-css", L"--no-js"})));

    EXPECT_EQ(GetUtf8(), "");
    EXPECT_EQ(LbFileSystem::GetFileNames(m_folder.GetPath()),
              (std::vector<std::wstring>{L"Diff-[a][a].html", L"a.xml"}));
}

TEST_F(RunCommandLine, IsTrueWhenReportsCannotBeCompared)
{
    EXPECT_TRUE(Call({L"--diff-in", L"a.xml"}));
    EXPECT_EQ(GetUtf8(), "Fehler Diff: Es müssen zwei Dateien angegeben werden.\n");
}

TEST_F(RunCommandLine, ListsTheSelectionDespiteOtherModes)
{
    EXPECT_TRUE(Call(GetRunOptions({L"-q", L"--archive-run", L"a:b", L"--list-duplicates"})));
    EXPECT_TRUE(GetUtf8().starts_with("Datenverzeichnis: ")) << GetUtf8();
}

TEST_F(RunCommandLine, ListsDuplicatesDespiteOtherModes)
{
    EXPECT_TRUE(Call(GetRunOptions({L"--list-duplicates", L"--list-disabled"})));
    EXPECT_TRUE(GetUtf8().ends_with("Redundante Datensätze darin: 0\n")) << GetUtf8();
}

TEST_F(RunCommandLine, DeletesDuplicates)
{
    m_folder.WriteFile(L"CDataSetModel/a.txt", "gut");
    m_folder.WriteFile(L"CDataSetModel/b.txt", "gut");

    EXPECT_TRUE(Call(GetRunOptions({L"--delete-duplicates"})));
    EXPECT_NE(GetUtf8().find("[KEEP]"), std::string::npos) << GetUtf8();
    EXPECT_EQ(LbFileSystem::GetFileNames(m_folder.GetPathOf(L"CDataSetModel")).size(), 1U);
}

TEST_F(RunCommandLine, ListsDisabledCasesDespiteOtherModes)
{
    m_folder.MakeFolder(L"CFailedModel");

    EXPECT_TRUE(Call(GetRunOptions({L"--list-disabled", L"--response-event-id", L"Ereignis"})));
    EXPECT_TRUE(GetUtf8().ends_with("Deaktivierte Fälle: 0 von 1\n")) << GetUtf8();
}

TEST_F(RunCommandLine, ServesAParentRunInsteadOfRunning)
{
    m_folder.MakeFolder(L"CFailedModel");

    EXPECT_THROW(Call(GetRunOptions({L"--response-event-id", L"Ereignis"})), LbException);
    EXPECT_EQ(GetUtf8(), "");
}

TEST_F(RunCommandLine, PassesOnExceptionsOfTheRun)
{
    EXPECT_THROW(Call(GetRunOptions({L"-i", L"["})), std::wstring);
}

} // namespace

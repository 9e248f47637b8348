// Tests the directories and the assertion dialog of a run and its cases.

#include <functional>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbassert.h"
#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/os/files.h"
#include "tests/support/runtest.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/scopedworkingdirectory.h"

namespace
{

/// The environment is created while the working directory is a folder of the test.
class RunPlaces : public testing::Test
{
protected:
    /// The one information line of a case of CPlaceModel.
    static std::wstring GetInfo(const LuTestSuiteRun::SCaseInfo& info)
    {
        const std::wstring tag = L"\t\tINFO:  ";
        EXPECT_TRUE(info.messages.starts_with(tag));
        return info.messages.substr(tag.size(), info.messages.size() - tag.size() - 1);
    }

    std::wstring GetInfo(const LuTestSuiteSetup& setup)
    {
        return GetInfo(LuTestSuiteRun::Run(setup, m_environment).cases.at(0));
    }

    /// Runs a case that changes the working directory. Expects that the next case starts in the executable's folder.
    void ExpectThatCasesStartAtHome(bool isExternal, bool isParallel)
    {
        LuTestSuiteSetup setup = MakePlaceSetup({L"Umzug", L"Arbeitsverzeichnis"});
        setup.params.external = isExternal;
        setup.params.parallel = isParallel;
        const LuTestSuiteRun::SRunResult result = LuTestSuiteRun::Run(setup, m_environment);

        EXPECT_EQ(result.cases.at(0).result, LuTestSuiteRun::ECaseRunResult::Ok);
        EXPECT_EQ(LbPath::WithSeparator(GetInfo(result.cases.at(1))),
                  LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable));
    }

    static LuTestSuiteSetup MakePlaceSetup(const std::vector<std::wstring>& caseNames)
    {
        return MakeSetup({MakeUnitTest(L"CPlaceModel", caseNames)});
    }

    ScopedFolder m_folder;
    ScopedWorkingDirectory m_start{m_folder.GetPath()};
    CapturedOutput m_output;
    LuTestSuiteEnvironment m_environment;
};

TEST_F(RunPlaces, CasesRunInTheFolderOfTheExecutable)
{
    const std::wstring directory = GetInfo(MakePlaceSetup({L"Arbeitsverzeichnis"}));

    EXPECT_EQ(LbPath::WithSeparator(directory), LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable));
}

TEST_F(RunPlaces, CasesRunInTheFolderOfTheExecutableAfterACaseLeftIt)
{
    ExpectThatCasesStartAtHome(false, false);
}

TEST_F(RunPlaces, CasesOnAWorkerRunInTheFolderOfTheExecutableAfterACaseLeftIt)
{
    ExpectThatCasesStartAtHome(false, true);
}

TEST_F(RunPlaces, CasesInAChildRunInTheFolderOfTheExecutableAfterACaseLeftIt)
{
    ExpectThatCasesStartAtHome(true, false);
}

TEST_F(RunPlaces, TheWorkingDirectoryIsRestoredAfterARun)
{
    const std::wstring before = LbOs::GetWorkingDirectory();

    LuTestSuiteRun::Run(MakePlaceSetup({L"Dialog"}), m_environment);

    EXPECT_EQ(LbOs::GetWorkingDirectory(), before);
}

TEST_F(RunPlaces, TheWorkingDirectoryOfTheEnvironmentIsRestoredAfterARun)
{
    const std::wstring before = LbOs::GetWorkingDirectory();
    const ScopedFolder other;
    const ScopedWorkingDirectory changed(other.GetPath());

    LuTestSuiteRun::Run(MakePlaceSetup({L"Dialog"}), m_environment);

    EXPECT_EQ(LbOs::GetWorkingDirectory(), before);
}

TEST_F(RunPlaces, TheWorkingDirectoryIsRestoredWhenSelectionFails)
{
    const std::wstring before = LbOs::GetWorkingDirectory();
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
    setup.includes = {L"["};

    EXPECT_THROW(LuTestSuiteRun::Run(setup, m_environment), std::wstring);

    EXPECT_EQ(LbOs::GetWorkingDirectory(), before);
}

TEST_F(RunPlaces, UnitTestsReceiveTheirDataDirectory)
{
    LuTestSuiteSetup setup = MakePlaceSetup({L"Datenverzeichnis"});
    setup.unitTests[0].dataDirectory = L"Größen und Maße/";

    EXPECT_EQ(LbEncoding::ToUtf8(GetInfo(setup)), "Größen und Maße/");
}

TEST_F(RunPlaces, EachCaseHasADirectoryForDebugSerialization)
{
    const std::wstring directory = GetInfo(MakePlaceSetup({L"Serialisierung"}));

    const std::wstring root = LbFileSystem::GetDirectory(LbFileSystem::eDK_DebugOutput);
    ASSERT_TRUE(directory.starts_with(root));
    const std::wstring rest = LbPath::ToNative(L"/Serialisierung");
    ASSERT_TRUE(directory.ends_with(rest));
    const std::wstring time = directory.substr(root.size(), directory.size() - root.size() - rest.size());
    EXPECT_TRUE(std::regex_match(time, std::wregex(LR"(\d{4}-\d{2}-\d{2} \d{2}\.\d{2}\.\d{2})")));
}

/// Tests child processes, worker threads, and both together.
TEST_F(RunPlaces, EachCaseHasADirectoryForDebugSerializationInEveryMode)
{
    for (const auto& [external, parallel] : {std::pair(true, false), std::pair(false, true), std::pair(true, true)})
    {
        LuTestSuiteSetup setup = MakePlaceSetup({L"Serialisierung", L"a/b\\c:d*e?f\"g<h>i|j\tk"});
        setup.params.external = external;
        setup.params.parallel = parallel;
        setup.params.workerThreads = 2;

        const auto result = LuTestSuiteRun::Run(setup, m_environment);

        const std::wstring root = LbFileSystem::GetDirectory(LbFileSystem::eDK_DebugOutput);
        const std::wstring first = GetInfo(result.cases.at(0));
        EXPECT_TRUE(first.starts_with(root)) << external << parallel;
        EXPECT_EQ(LbPath::GetLastComponent(first), L"Serialisierung") << external << parallel;
        EXPECT_EQ(LbPath::GetLastComponent(GetInfo(result.cases.at(1))), L"a_b_c_d_e_f_g_h_i_j_k")
            << external << parallel;
    }
}

TEST_F(RunPlaces, DebugSerializationReplacesCharactersThatAreUnsafeInPaths)
{
    const std::wstring directory = GetInfo(MakePlaceSetup({L"a/b\\c:d*e?f\"g<h>i|j\tk"}));

    EXPECT_EQ(LbPath::GetLastComponent(directory), L"a_b_c_d_e_f_g_h_i_j_k");
}

TEST_F(RunPlaces, DebugSerializationOfOneRunHasOneRoot)
{
    LuTestSuiteSetup setup = MakePlaceSetup({L"Serialisierung", L"a/b\\c:d*e?f\"g<h>i|j\tk"});
    setup.params.repetitions = 2;

    const auto result = LuTestSuiteRun::Run(setup, m_environment);

    const std::wstring root = LbPath::GetParent(GetInfo(result.cases.at(0)));
    for (const LuTestSuiteRun::SCaseInfo& info : result.cases)
    {
        EXPECT_EQ(LbPath::GetParent(GetInfo(info)), root);
    }
}

TEST_F(RunPlaces, TheDialogIsEnabledByDefault)
{
    LbAssert::SetDialogEnabled(false);

    EXPECT_EQ(GetInfo(MakePlaceSetup({L"Dialog"})), L"1");
    EXPECT_TRUE(LbAssert::IsDialogEnabled());
}

TEST_F(RunPlaces, TheDialogCanBeSwitchedOffForARun)
{
    LuTestSuiteSetup setup = MakePlaceSetup({L"Dialog"});
    setup.params.assertDialog = false;

    EXPECT_EQ(GetInfo(setup), L"0");
    EXPECT_TRUE(LbAssert::IsDialogEnabled());
}

TEST_F(RunPlaces, TheDialogIsEnabledAgainWhenARunFails)
{
    LuTestSuiteSetup setup = MakePlaceSetup({L"Dialog"});
    setup.params.assertDialog = false;
    setup.checkCallback = nullptr;

    EXPECT_THROW(LuTestSuiteRun::Run(setup, m_environment), std::bad_function_call);

    EXPECT_TRUE(LbAssert::IsDialogEnabled());
}

} // namespace

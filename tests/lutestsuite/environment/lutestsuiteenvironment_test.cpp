#include "testing/lutestsuite/lutestsuiteenvironment.h"

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbmessagedispatcher.h"
#include "base/lbpath.h"
#include "base/lbproductregistry.h"
#include "base/lbrtti.h"
#include "base/lbthreadpool.h"
#include "base/lbuniqueid.h"
#include "base/lustream.h"
#include "base/os/files.h"
#include "base/os/platform.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/places.h"
#include "tests/support/scopedenvironment.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/scopedworkingdirectory.h"

namespace
{

using testing::IsEmpty;

std::wstring GetWorkingDirectoryString()
{
    return LbPath::WithSeparator(LbOs::GetWorkingDirectory());
}

TEST(LuTestSuiteEnvironment, RegistersTheProduct)
{
    const LuTestSuiteEnvironment environment;

    const auto product = LbProductRegistry::Find(L"LuTestSuite");

    ASSERT_TRUE(product);
    EXPECT_EQ(product->version, L"1.0");
}

TEST(LuTestSuiteEnvironment, StartsTheMessageDispatcher)
{
    const LuTestSuiteEnvironment environment;

    EXPECT_TRUE(LbMessageDispatcher::GetInstance().IsRunning());
}

TEST(LuTestSuiteEnvironment, KeepsARunningMessageDispatcher)
{
    ASSERT_TRUE(LbMessageDispatcher::GetInstance().Start());
    bool isHandled = false;

    const LuTestSuiteEnvironment environment;

    EXPECT_TRUE(LbMessageDispatcher::GetInstance().Post([&isHandled] { isHandled = true; }));
    LbMessageDispatcher::GetInstance().Flush();
    EXPECT_TRUE(isHandled);
}

TEST(LuTestSuiteEnvironment, ShutsDispatcherAndPoolDownAtItsEnd)
{
    {
        const LuTestSuiteEnvironment environment;
        EXPECT_TRUE(LbMessageDispatcher::Exists());
        EXPECT_TRUE(LbThreadPool::Exists());
    }
    EXPECT_FALSE(LbMessageDispatcher::Exists());
    EXPECT_FALSE(LbThreadPool::Exists());
}

TEST(LuTestSuiteEnvironment, WaitsForPostedMessagesAndTasksAtItsEnd)
{
    bool isHandled = false;
    bool isDone = false;
    {
        const LuTestSuiteEnvironment environment;
        LbMessageDispatcher::GetInstance().Post([&isHandled] { isHandled = true; });
        LbThreadPool::GetInstance().Run([&isDone] { isDone = true; });
    }
    EXPECT_TRUE(isHandled);
    EXPECT_TRUE(isDone);
}

TEST(LuTestSuiteEnvironment, EndsAfterDispatcherAndPoolHaveBeenShutDown)
{
    const LuTestSuiteEnvironment environment;

    LbMessageDispatcher::Shutdown();
    LbThreadPool::Shutdown();
}

TEST(LuTestSuiteEnvironment, CanBeCreatedAgain)
{
    for (int round = 0; round < 2; ++round)
    {
        const LuTestSuiteEnvironment environment;
        EXPECT_TRUE(LbMessageDispatcher::GetInstance().IsRunning());
    }
}

TEST(LuTestSuiteEnvironment, CannotBeCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<LuTestSuiteEnvironment>);
    EXPECT_FALSE(std::is_copy_assignable_v<LuTestSuiteEnvironment>);
}

TEST(LuTestSuiteEnvironment, PrintsNothing)
{
    const CapturedOutput output;
    {
        LuTestSuiteEnvironment environment;
        LuTestSuiteEnvironment::PreallocateStaticData();
    }
    EXPECT_EQ(output.GetText(), L"");
}

TEST(LuTestSuiteEnvironment, SetsTheWorkingDirectoryToTheFolderOfTheExecutable)
{
    const ScopedFolder folder;
    const ScopedWorkingDirectory workingDirectory(folder.GetPath());
    LuTestSuiteEnvironment environment;
    EXPECT_EQ(GetWorkingDirectoryString(), folder.GetPath());

    environment.SetExecutableDirectoryAsWorkingDirectory();

    EXPECT_EQ(GetWorkingDirectoryString(), LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable));
}

TEST(LuTestSuiteEnvironment, RestoresTheWorkingDirectoryThatItStartedWith)
{
    const ScopedFolder folder;
    const std::wstring later = folder.MakeFolder(L"später");
    const ScopedWorkingDirectory workingDirectory(folder.GetPath());
    LuTestSuiteEnvironment environment;
    ASSERT_TRUE(LbOs::SetWorkingDirectory(later));

    environment.SetExecutableDirectoryAsWorkingDirectory();
    environment.RestoreWorkingDirectory();

    EXPECT_EQ(GetWorkingDirectoryString(), folder.GetPath());
}

TEST(PreallocateStaticData, MayBeCalledAgain)
{
    LuTestSuiteEnvironment::PreallocateStaticData();
    LuTestSuiteEnvironment::PreallocateStaticData();

    EXPECT_TRUE(LbThreadPool::Exists());
}

TEST(PreallocateStaticData, LeavesNoFile)
{
    const ScopedFolder folder;
    // Each platform reads one of the two variables.
    const ScopedEnvironmentVariable temporaryOnLinux(L"TMPDIR", folder.GetPath());
    const ScopedEnvironmentVariable temporaryOnWindows(L"TMP", folder.GetPath());
    ASSERT_EQ(LbFileSystem::GetDirectory(LbFileSystem::eDK_Temporary), folder.GetPath());

    LuTestSuiteEnvironment::PreallocateStaticData();

    EXPECT_THAT(LbFileSystem::GetFileNames(folder.GetPath()), IsEmpty());
}

// Modules.

class LoadDLL : public testing::Test
{
protected:
    /// Creates an invalid module in the executable's folder or below it, under a name that no other test uses.
    std::wstring WriteBrokenModule(const std::wstring& folder = {})
    {
        const std::wstring name = folder + L"BrokenModule-" + LbUniqueId::Generate();
        const std::wstring path = GetPathOf(name + LbOs::c_ModuleSuffix);
        EXPECT_TRUE(LbFileSystem::AssertDirectory(LbPath::GetParent(path)));
        LuStreamWriteBinaryFile file(path);
        file.Write("kein Modul", 10);
        file.Close();
        m_files.push_back(path);
        return name;
    }

    ~LoadDLL() override
    {
        for (const std::wstring& file : m_files)
        {
            LbOs::RemoveFile(file);
            // Removes the module's own folder if there is one. The executable's folder is not empty and stays.
            LbOs::RemoveEmptyDirectory(LbPath::GetParent(file));
        }
    }

    static std::wstring GetPathOf(const std::wstring& name)
    {
        return LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable) + LbPath::ToNative(name);
    }

    LuTestSuiteEnvironment m_environment;
    CapturedOutput m_output;
    std::vector<std::wstring> m_files;
};

TEST_F(LoadDLL, RegistersTheClassesOfAModule)
{
    for (const bool flag : {false, true})
    {
        m_environment.LoadDLL(L"registryprobe", flag);
        EXPECT_NE(LbRTTI::Find(L"CRegistryProbe"), nullptr);
    }
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(LoadDLL, KeepsModulesLoadedAfterTheEnvironmentIsDestroyed)
{
    {
        LuTestSuiteEnvironment environment;
        environment.LoadDLL(L"registryprobe", false);
    }
    EXPECT_NE(LbRTTI::Find(L"CRegistryProbe"), nullptr);
}

TEST_F(LoadDLL, SkipsAnAbsentModuleSilently)
{
    m_environment.LoadDLL(L"NoSuchModule", true);
    m_environment.LoadDLL(L"NoSuchFolder\\NoSuchModule", false);

    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(LoadDLL, ReportsABrokenModuleAndTheReason)
{
    for (const bool flag : {false, true})
    {
        const std::wstring name = WriteBrokenModule();
        m_output.Clear();

        EXPECT_NO_THROW(m_environment.LoadDLL(name, flag));

        const std::vector<CapturedOutput::SLine> lines = m_output.GetLines();
        ASSERT_EQ(lines.size(), 2U);
        EXPECT_EQ(lines[0], CapturedOutput::BoldColored(L"DLL '" + name + LbOs::c_ModuleSuffix +
                                                            L"' konnte nicht geladen werden.\n",
                                                        LuColor::c_GOLDENROD));
        EXPECT_TRUE(lines[1].text.starts_with(L"    Grund: ")) << LbEncoding::ToUtf8(lines[1].text);
        EXPECT_TRUE(lines[1].text.ends_with(L"\n"));
        EXPECT_FALSE(lines[1].isBold || lines[1].hasColor);
    }
}

TEST_F(LoadDLL, AcceptsANameWithAFolder)
{
    const std::wstring name = WriteBrokenModule(L"BrokenModules-" + LbUniqueId::Generate() + L"\\");

    m_environment.LoadDLL(name, true);

    EXPECT_TRUE(m_output.GetText().starts_with(L"DLL '" + LbPath::ToNative(name) + LbOs::c_ModuleSuffix +
                                               L"' konnte nicht geladen werden.\n"))
        << LbEncoding::ToUtf8(m_output.GetText());
}

TEST_F(LoadDLL, DoesNotLoadAFolderAsModule)
{
    const std::wstring path = GetPathOf(L"FolderModule-" + LbUniqueId::Generate());
    ASSERT_TRUE(LbFileSystem::AssertDirectory(path + LbOs::c_ModuleSuffix));

    m_environment.LoadDLL(LbPath::GetLastComponent(path), false);

    EXPECT_EQ(m_output.GetText(), L"");
    LbOs::RemoveEmptyDirectory(path + LbOs::c_ModuleSuffix);
}

TEST_F(LoadDLL, LooksBesideTheExecutableOnly)
{
    const ScopedFolder folder;
    const ScopedWorkingDirectory workingDirectory(folder.GetPath());
    folder.WriteFile(std::wstring(L"BrokenModuleElsewhere") + LbOs::c_ModuleSuffix, "kein Modul");

    m_environment.LoadDLL(L"BrokenModuleElsewhere", false);

    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(LoadDLL, IsSilentForTheFixedListOfTestModules)
{
    m_environment.LoadTestDLLs();

    EXPECT_EQ(m_output.GetText(), L"");
}

/// The names of the built-in fixed list.
std::vector<std::string> GetDeliveredNames()
{
    const std::wstring file =
        LbEncoding::FromUtf8(LUTESTSUITE_SOURCE_DIR) + L"/testing/lutestsuite/resources/testmodules.txt";
    std::vector<std::string> names;
    const std::string text = LbFileSystem::ReadFile8Bit(file);
    for (std::size_t start = 0; start < text.size();)
    {
        const std::size_t end = text.find('\n', start);
        if (text[start] != '#')
        {
            names.push_back(text.substr(start, end - start));
        }
        start = end + 1;
    }
    return names;
}

TEST(FixedListOfTestModules, HasThirtyNamesInAlphabeticalOrder)
{
    const std::vector<std::string> names = GetDeliveredNames();

    EXPECT_EQ(names.size(), 30U);
    EXPECT_TRUE(std::ranges::is_sorted(names));
}

TEST(FixedListOfTestModules, HasOneModuleInTheFolderComponents)
{
    const std::vector<std::string> names = GetDeliveredNames();

    EXPECT_EQ(std::ranges::count_if(names, [](const std::string& name) { return name.starts_with("Components/"); }), 1);
}

} // namespace

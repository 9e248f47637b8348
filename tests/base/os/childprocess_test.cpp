#include "base/os/childprocess.h"

#include <cstdlib>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/os/testaids.h"
#include "tests/support/probe.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/scopedworkingdirectory.h"

namespace
{

using LbOs::CChildProcess;

/// Waits for the end of a process and gives its status; fails the test when it does not end.
std::optional<std::int64_t> getStatus(CChildProcess& child)
{
    constexpr std::uint32_t c_Long = 60000;
    EXPECT_TRUE(child.Wait(c_Long));
    return child.GetExitStatus();
}

TEST(OsChildProcess, GivesTheExitStatus)
{
    const auto child = StartProbe(L"exit 7");
    ASSERT_NE(child, nullptr);

    EXPECT_EQ(getStatus(*child), 7);
}

TEST(OsChildProcess, HasNoExitStatusWhileItRuns)
{
    const auto child = StartProbe(L"sleep");
    ASSERT_NE(child, nullptr);

    EXPECT_EQ(child->GetExitStatus(), std::nullopt);
}

TEST(OsChildProcess, HasAnExitStatusOnceItIsTerminated)
{
    const auto child = StartProbe(L"sleep");
    ASSERT_NE(child, nullptr);

    child->Terminate();

    EXPECT_EQ(child->GetExitStatus(), LbPath::c_Separator == L'\\' ? 0 : -9);
}

/// Without a status nobody can take a process that has crashed for one that has left.
TEST(OsChildProcess, HasNoExitStatusWhenOthersHaveWaitedForIt)
{
    const auto child = StartProbe(L"exit 0");
    ASSERT_NE(child, nullptr);
    ASSERT_TRUE(child->Wait());
    if (!LbOs::WaitForEndedChildren())
    {
        GTEST_SKIP() << "waiting takes nothing from others here";
    }

    EXPECT_EQ(child->GetExitStatus(), std::nullopt);
    child->Terminate();
    EXPECT_FALSE(child->IsRunning());
    EXPECT_EQ(child->GetExitStatus(), std::nullopt);
}

TEST(OsChildProcess, IsNotThereWithoutAProgram)
{
    LbOs::SChildOptions options;
    options.program = LbOs::GetExecutablePath() + L"-gibt es nicht";
    options.commandLine = L"a";

    EXPECT_EQ(CChildProcess::Start(options), nullptr);
    options.program.clear();
    options.commandLine = LbCommandLine::Quote(LbOs::GetExecutablePath() + L"-gibt es nicht");
    EXPECT_EQ(CChildProcess::Start(options), nullptr);
}

TEST(OsChildProcess, IsNotThereWithoutItsWorkingDirectory)
{
    const ScopedFolder folder;
    LbOs::SChildOptions options = GetProbeOptions(L"exit 0");
    options.workingDirectory = folder.GetPathOf(L"fehlt");

    EXPECT_EQ(CChildProcess::Start(options), nullptr);
}

TEST(OsChildProcess, ReceivesItsArgumentsUnchanged)
{
    const ScopedFolder folder;
    const std::wstring file = folder.GetPathOf(L"Größen und Maße.txt");
    const std::wstring directory = folder.MakeFolder(L"mit Lücke und ß");
    LbOs::SChildOptions options = GetProbeOptions(L"arguments");
    options.workingDirectory = directory;
    for (const std::wstring& argument : {file, std::wstring(L"mit Lücke\\"), std::wstring(L"a\"b"), std::wstring()})
    {
        options.commandLine += L" " + LbCommandLine::Quote(argument);
    }
    const auto child = CChildProcess::Start(options);
    ASSERT_NE(child, nullptr);
    ASSERT_EQ(getStatus(*child), 0);

    EXPECT_EQ(LbFileSystem::ReadFile8Bit(file), "processprobe\narguments\n" + LbEncoding::ToUtf8(file) +
                                                    "\nmit Lücke\\\na\"b\n\n" +
                                                    LbEncoding::ToUtf8(LbPath::WithoutSeparator(directory)) + "\n");
}

/// Tests run in the folder of the programs.
TEST(OsChildProcess, IsAProgramFromTheCallersFolderWhereverItWorks)
{
    const ScopedFolder folder;
    LbOs::SChildOptions options = GetProbeOptions(L"");
    options.program = LbPath::ToNative(L"./processprobe") + LbOs::c_ExecutableSuffix;
    options.workingDirectory = folder.GetPath();
    options.commandLine = options.program + L" exit 5";
    const auto named = CChildProcess::Start(options);
    options.program.clear();
    const auto lookedUp = CChildProcess::Start(options);
    ASSERT_NE(named, nullptr);
    ASSERT_NE(lookedUp, nullptr);

    EXPECT_EQ(getStatus(*named), 5);
    EXPECT_EQ(getStatus(*lookedUp), 5);
}

/// Which is not the root.
TEST(OsChildProcess, IsNoProgramFromAFolderThatIsGone)
{
    const ScopedFolder folder;
    const std::wstring gone = LbPath::WithoutSeparator(folder.MakeFolder(L"weg"));
    const ScopedWorkingDirectory place(gone);
    if (!LbOs::RemoveEmptyDirectory(gone))
    {
        GTEST_SKIP() << "working directories cannot be removed here";
    }
    LbOs::SChildOptions options = GetProbeOptions(L"exit 5");
    ASSERT_TRUE(options.program.starts_with(L'/'));
    options.program.erase(0, 1);

    EXPECT_EQ(CChildProcess::Start(options), nullptr);
}

TEST(OsChildProcess, LooksItsProgramUpWhenOnlyTheCommandLineNamesIt)
{
    LbOs::SChildOptions options = GetProbeOptions(L"");
    options.commandLine = LbCommandLine::Quote(options.program) + L" exit 5";
    options.program.clear();
    const auto child = CChildProcess::Start(options);
    ASSERT_NE(child, nullptr);

    EXPECT_EQ(getStatus(*child), 5);
}

TEST(OsChildProcess, RunsUntilItIsTerminated)
{
    const auto child = StartProbe(L"sleep");
    ASSERT_NE(child, nullptr);

    EXPECT_TRUE(child->IsRunning());
    EXPECT_FALSE(child->Wait(1));
    child->Terminate();
    EXPECT_FALSE(child->IsRunning());
    child->Terminate();
    EXPECT_FALSE(child->IsRunning());
}

TEST(OsChildProcess, TakesWhatItStartedAlongWithItsObject)
{
    CProbeLine line;
    auto child = StartProbe(L"parent " + line.GetName());
    ASSERT_NE(child, nullptr);
    ASSERT_TRUE(line.WaitReady());
    ASSERT_TRUE(line.IsAlive());

    child.reset();

    EXPECT_TRUE(line.IsGone());
}

/// How a process starts another: as a command of the probe.
class OsChildProcessTree : public testing::TestWithParam<const wchar_t*>
{
};

TEST_P(OsChildProcessTree, EndsWhenTheProcessIsTerminated)
{
    CProbeLine line;
    const auto child = StartProbe(GetParam() + (L" " + line.GetName()));
    ASSERT_NE(child, nullptr);
    ASSERT_TRUE(line.WaitReady());
    ASSERT_TRUE(line.IsAlive());

    child->Terminate();

    EXPECT_TRUE(line.IsGone());
}

TEST_P(OsChildProcessTree, EndsWhenItsOwnerIsKilled)
{
    CProbeLine line;
    LbOs::SChildOptions options = GetProbeOptions(L"owner " + line.GetName() + L" " + GetParam());
    options.endsWithOwner = false;
    const auto owner = CChildProcess::Start(options);
    ASSERT_NE(owner, nullptr);
    ASSERT_TRUE(line.WaitReady());
    ASSERT_TRUE(line.IsAlive());

    // The owner's child leads a group of its own, so that this reaches the owner alone.
    owner->Terminate();

    // What watches over the owner needs a moment.
    EXPECT_TRUE(line.WaitGone());
}

TEST_P(OsChildProcessTree, EndsWhenItsOwnersOwnerTerminatesThat)
{
    CProbeLine line;
    const auto owner = StartProbe(L"owner " + line.GetName() + L" " + GetParam());
    ASSERT_NE(owner, nullptr);
    ASSERT_TRUE(line.WaitReady());
    ASSERT_TRUE(line.IsAlive());

    owner->Terminate();

    EXPECT_TRUE(line.WaitGone());
}

INSTANTIATE_TEST_SUITE_P(Commands, OsChildProcessTree, testing::Values(L"parent", L"runaway", L"outsider"));

TEST_P(OsChildProcessTree, EndsWhenItsOwnerEndsWithoutAWord)
{
    CProbeLine line;
    const auto leave = LbOs::CNamedEvent::Create(line.GetName() + L"-l");
    LbOs::SChildOptions options = GetProbeOptions(L"leaver " + line.GetName() + L" " + GetParam());
    options.endsWithOwner = false;
    const auto owner = CChildProcess::Start(options);
    ASSERT_NE(owner, nullptr);
    ASSERT_TRUE(line.WaitReady());
    ASSERT_TRUE(line.IsAlive());

    leave->Set();
    EXPECT_EQ(getStatus(*owner), 3);

    EXPECT_TRUE(line.WaitGone());
}

/// On Windows nothing stops a process that reads.
TEST(OsChildProcess, ReadsNothingFromTheTerminalOfItsOwner)
{
    if constexpr (LbPath::c_Separator == L'\\')
    {
        GTEST_SKIP() << "children share the input";
    }
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"Eingabe.txt", "Text");
    const std::wstring command =
        LbCommandLine::Quote(GetProbeOptions(L"").program) + L" feeder <" + LbCommandLine::Quote(file);

    EXPECT_EQ(std::system(LbEncoding::ToNative(command).c_str()), 0);
}

TEST(OsChildProcess, OutlivesItsObjectWhenLetGo)
{
    CProbeLine line;
    {
        const auto child = StartProbe(L"answer " + line.GetName());
        ASSERT_NE(child, nullptr);
        child->LetGo();
    }

    EXPECT_TRUE(line.IsAlive());
}

TEST(OsChildProcess, CanBeTerminatedAfterItWasLetGo)
{
    CProbeLine line;
    const auto child = StartProbe(L"parent " + line.GetName());
    ASSERT_NE(child, nullptr);
    ASSERT_TRUE(line.WaitReady());
    ASSERT_TRUE(line.IsAlive());
    child->LetGo();

    child->Terminate();

    EXPECT_TRUE(line.IsGone());
}

TEST(OsChildProcess, OutlivesItsObjectWhenAsked)
{
    CProbeLine line;
    LbOs::SChildOptions options = GetProbeOptions(L"answer " + line.GetName());
    options.endsWithOwner = false;
    CChildProcess::Start(options);

    EXPECT_TRUE(line.IsAlive());
}

} // namespace

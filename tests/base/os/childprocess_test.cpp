#include "base/os/childprocess.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/os/processes.h"
#include "tests/support/os/testaids.h"
#include "tests/support/probe.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/scopedworkingdirectory.h"

namespace
{

using LbOs::CChildProcess;

/// Waits for the end of a process and returns its status; fails the test if it does not end within a minute.
std::optional<std::int64_t> getStatus(CChildProcess& child)
{
    constexpr std::uint32_t c_Long = 60000;
    EXPECT_TRUE(child.Wait(c_Long));
    return child.GetExitStatus();
}

TEST(OsChildProcess, ReturnsItsExitStatus)
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

TEST(OsChildProcess, HasAnExitStatusAfterTermination)
{
    const auto child = StartProbe(L"sleep");
    ASSERT_NE(child, nullptr);

    child->Terminate();

    EXPECT_EQ(child->GetExitStatus(), LbPath::c_Separator == L'\\' ? 0 : -9);
}

/// The status to expect; empty if the system discards the status. With 0 instead, a crash could pass as a normal exit.
std::optional<std::int64_t> getStatusIfRemembered(std::int64_t status)
{
    return LbOs::RemembersForgottenChildren() ? std::optional(status) : std::nullopt;
}

TEST(OsChildProcess, KeepsItsExitStatusIfOtherCodeHasWaitedForIt)
{
    const auto child = StartProbe(L"exit 7");
    ASSERT_NE(child, nullptr);
    ASSERT_TRUE(child->Wait());
    if (!LbOs::WaitForEndedChildren())
    {
        GTEST_SKIP() << "a process can be waited for more than once here";
    }

    EXPECT_EQ(child->GetExitStatus(), getStatusIfRemembered(7));
    child->Terminate();
    EXPECT_FALSE(child->IsRunning());
    EXPECT_EQ(child->GetExitStatus(), getStatusIfRemembered(7));
}

TEST(OsChildProcess, KeepsTheSignalThatEndedItIfOtherCodeHasWaitedForIt)
{
    const auto child = StartProbe(L"sleep");
    ASSERT_NE(child, nullptr);
    LbOs::KillProcess({static_cast<unsigned long>(child->GetId()), L"processprobe"});
    ASSERT_TRUE(child->Wait());
    if (!LbOs::WaitForEndedChildren())
    {
        GTEST_SKIP() << "a process can be waited for more than once here";
    }

    EXPECT_EQ(child->GetExitStatus(), getStatusIfRemembered(-9));
}

/// If the system forgets children, a process may be gone before anyone queries it.
TEST(OsChildProcess, StartsEvenIfTheSystemDiscardsEndedChildren)
{
    constexpr int c_Starts = 50;
    if (!LbOs::SetChildrenForgotten(true))
    {
        GTEST_SKIP() << "the system keeps ended children while a handle exists";
    }
    int started = 0;
    int ended = 0;
    int known = 0;
    for (int start = 0; start < c_Starts; ++start)
    {
        const auto child = StartProbe(L"exit 7");
        started += child ? 1 : 0;
        ended += child && child->Wait() ? 1 : 0;
        known += child && child->GetExitStatus() == 7 ? 1 : 0;
    }
    LbOs::SetChildrenForgotten(false);

    EXPECT_EQ(started, c_Starts);
    EXPECT_EQ(ended, c_Starts);
    EXPECT_EQ(known, LbOs::RemembersForgottenChildren() ? c_Starts : 0);
}

TEST(OsChildProcess, CanBeTerminatedEvenIfTheSystemDiscardsEndedChildren)
{
    CProbeLine line;
    LbOs::SetChildrenForgotten(true);
    const auto child = StartProbe(L"answer " + line.GetName());
    const bool isAlive = line.IsAlive();
    child->Terminate();
    LbOs::SetChildrenForgotten(false);

    EXPECT_TRUE(isAlive);
    EXPECT_TRUE(line.IsGone());
    EXPECT_FALSE(child->IsRunning());
}

/// A case on another worker may close files of this process.
TEST(OsChildProcess, StartsWhileAnotherThreadClosesFiles)
{
    const std::optional<int> status = LbOs::RunInFork([] {
        constexpr int c_Starts = 30;
        std::atomic<bool> isEnough = false;
        std::thread closer([&isEnough] {
            constexpr std::intptr_t c_Files = 32;
            while (!isEnough)
            {
                for (std::intptr_t file = 3; file < c_Files; ++file)
                {
                    LbOs::CloseForOthers(file);
                }
            }
        });
        int right = 0;
        for (int start = 0; start < c_Starts; ++start)
        {
            const auto child = StartProbe(L"exit 7");
            right += child && child->Wait() && child->GetExitStatus() == 7 ? 1 : 0;
        }
        isEnough = true;
        closer.join();
        return right == c_Starts ? 0 : 1;
    });

    if (!status)
    {
        GTEST_SKIP() << "processes do not fork";
    }
    EXPECT_EQ(status, 0);
}

/// Expects that the start fails for this reason; on Windows only an error code is known.
void ExpectFailure(const LbOs::SChildOptions& options, const std::wstring& linuxReason)
{
    std::wstring failure;
    EXPECT_EQ(CChildProcess::Start(options, &failure), nullptr);
    EXPECT_TRUE(failure == linuxReason || failure.starts_with(L"Systemfehler ")) << LbEncoding::ToUtf8(failure);
}

TEST(OsChildProcess, DoesNotStartWithoutAProgram)
{
    LbOs::SChildOptions options;
    options.program = LbOs::GetExecutablePath() + L"-gibt es nicht";
    options.commandLine = L"a";

    ExpectFailure(options, L"execve " + options.program + L": No such file or directory");
    options.program.clear();
    options.commandLine = LbCommandLine::Quote(LbOs::GetExecutablePath() + L"-gibt es nicht");
    ExpectFailure(options, L"execve " + LbOs::GetExecutablePath() + L"-gibt es nicht: No such file or directory");
}

TEST(OsChildProcess, DoesNotStartWithoutACommandLine)
{
    ExpectFailure({}, L"execve: Invalid argument");
}

TEST(OsChildProcess, DoesNotStartWithoutItsWorkingDirectory)
{
    const ScopedFolder folder;
    LbOs::SChildOptions options = GetProbeOptions(L"exit 0");
    options.workingDirectory = folder.GetPathOf(L"fehlt");

    ExpectFailure(options, L"chdir " + options.workingDirectory + L": No such file or directory");
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

/// Tests run in the folder of the programs, so the relative path is valid there.
TEST(OsChildProcess, FindsARelativeProgramFromTheCallersFolder)
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

/// A program path relative to a deleted folder must not be looked up from the root.
TEST(OsChildProcess, DoesNotStartFromADeletedFolder)
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

TEST(OsChildProcess, FindsAProgramNamedOnlyInTheCommandLine)
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

/// A child whose handle other code has closed.
class OsChildProcessWithoutHandle : public testing::Test
{
protected:
    void SetUp() override
    {
        m_child = StartProbe(L"answer " + m_line.GetName());
        ASSERT_NE(m_child, nullptr);
        ASSERT_TRUE(m_line.IsAlive());
        if (!LbOs::CloseForOthers(m_child->GetWaitHandle()))
        {
            GTEST_SKIP() << "the handle cannot be closed here";
        }
    }

    CProbeLine m_line;
    std::unique_ptr<CChildProcess> m_child;
};

TEST_F(OsChildProcessWithoutHandle, IsReportedAsRunning)
{
    EXPECT_FALSE(m_child->Wait(1));
    EXPECT_TRUE(m_child->IsRunning());
    EXPECT_EQ(m_child->GetExitStatus(), std::nullopt);
}

TEST_F(OsChildProcessWithoutHandle, IsWaitedForWhenNoFileCanBeOpened)
{
    LbOs::SetFilesForbidden(true);
    const bool isWaitedFor = m_child->Wait(1);
    const bool isRunning = m_child->IsRunning();
    m_line.End();
    const bool hasEnded = m_child->Wait();
    LbOs::SetFilesForbidden(false);

    EXPECT_FALSE(isWaitedFor);
    EXPECT_TRUE(isRunning);
    EXPECT_TRUE(hasEnded);
    EXPECT_EQ(m_child->GetExitStatus(), 0);
}

TEST_F(OsChildProcessWithoutHandle, ReturnsItsExitStatusWhenItEnds)
{
    m_line.End();

    EXPECT_EQ(getStatus(*m_child), 0);
}

TEST_F(OsChildProcessWithoutHandle, CanBeTerminated)
{
    m_child->Terminate();

    EXPECT_FALSE(m_child->IsRunning());
    EXPECT_EQ(m_child->GetExitStatus(), -9);
    // No entry of the process is left, not even a zombie.
    EXPECT_EQ(std::ranges::count(LbOs::ListChildren(), m_child->GetId()), 0);
}

TEST_F(OsChildProcessWithoutHandle, EndsWithItsObject)
{
    const std::uint64_t id = m_child->GetId();

    m_child.reset();

    EXPECT_TRUE(m_line.IsGone());
    EXPECT_EQ(std::ranges::count(LbOs::ListChildren(), id), 0);
}

TEST_F(OsChildProcessWithoutHandle, IsNotConfusedWithTheNextOwnerOfItsHandle)
{
    const auto handle = m_child->GetWaitHandle();
    const auto other = StartProbe(L"exit 3");
    ASSERT_NE(other, nullptr);
    ASSERT_EQ(other->GetWaitHandle(), handle);
    ASSERT_TRUE(other->Wait());

    EXPECT_TRUE(m_child->IsRunning());
    EXPECT_EQ(m_child->GetExitStatus(), std::nullopt);
    m_child.reset();

    EXPECT_EQ(other->GetExitStatus(), 3);
}

TEST_F(OsChildProcessWithoutHandle, DoesNotCloseItsHandleOnceAnotherChildOwnsIt)
{
    const auto handle = m_child->GetWaitHandle();
    const auto other = StartProbe(L"sleep");
    ASSERT_NE(other, nullptr);
    ASSERT_EQ(other->GetWaitHandle(), handle);

    m_child.reset();

    EXPECT_TRUE(LbOs::CloseForOthers(other->GetWaitHandle()));
}

TEST(OsChildProcess, EndsWhenTheDebuggerReleasesIt)
{
    const auto child = StartProbe(L"sleep");
    ASSERT_NE(child, nullptr);
    auto hold = LbOs::HoldEnd(child->GetId());
    if (!hold)
    {
        GTEST_SKIP() << "the end of a process cannot be hidden here";
    }

    EXPECT_FALSE(child->Wait(10));
    hold.reset();
    EXPECT_EQ(getStatus(*child), -9);
}

TEST(OsChildProcess, StartsNoHelperProcessAfterPreparation)
{
    LbOs::EndKeeper();
    CChildProcess::PrepareStarts();
    std::vector<unsigned long> expected = LbOs::ListChildren();

    const auto child = StartProbe(L"sleep");

    ASSERT_NE(child, nullptr);
    expected.push_back(static_cast<unsigned long>(child->GetId()));
    EXPECT_THAT(LbOs::ListChildren(), testing::UnorderedElementsAreArray(expected));
}

/// Skipped on Windows, where background processes may read from the console.
TEST(OsChildProcess, ReadsNothingFromTheTerminalOfItsOwner)
{
    if constexpr (LbPath::c_Separator == L'\\')
    {
        GTEST_SKIP() << "child processes share the input here";
    }
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"Eingabe.txt", "Text");
    const std::wstring command =
        LbCommandLine::Quote(GetProbeOptions(L"").program) + L" feeder <" + LbCommandLine::Quote(file);

    EXPECT_EQ(std::system(LbEncoding::ToNative(command).c_str()), 0);
}

TEST(OsChildProcess, OutlivesItsObjectWhenDetached)
{
    CProbeLine line;
    {
        const auto child = StartProbe(L"answer " + line.GetName());
        ASSERT_NE(child, nullptr);
        child->Detach();
    }

    EXPECT_TRUE(line.IsAlive());
    line.End();
    EXPECT_TRUE(line.WaitGone());
}

TEST(OsChildProcess, CanBeTerminatedAfterItWasDetached)
{
    CProbeLine line;
    const auto child = StartProbe(L"parent " + line.GetName());
    ASSERT_NE(child, nullptr);
    ASSERT_TRUE(line.WaitReady());
    ASSERT_TRUE(line.IsAlive());
    child->Detach();

    child->Terminate();

    EXPECT_TRUE(line.IsGone());
}

TEST(OsChildProcess, OutlivesItsObjectOnRequest)
{
    CProbeLine line;
    LbOs::SChildOptions options = GetProbeOptions(L"answer " + line.GetName());
    options.endsWithOwner = false;
    CChildProcess::Start(options);

    EXPECT_TRUE(line.IsAlive());
    line.End();
    EXPECT_TRUE(line.WaitGone());
}

} // namespace

#include "base/os/processes.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "base/inoncopyable.h"
#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbuniqueid.h"
#include "base/os/console.h"
#include "base/os/process.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/os/testaids.h"
#include "tests/support/probe.h"
#include "tests/support/programcopy.h"
#include "tests/support/scopedenvironment.h"
#include "tests/support/scopedfolder.h"

namespace
{

constexpr std::uint32_t c_Long = 60000;
constexpr std::uint32_t c_LongSec = 60;

/// Starts this test program as a child that runs one of the disabled tests below.
std::unique_ptr<LbOs::CChildProcess> startOwnTest(const std::wstring& name,
                                                  const std::wstring& program = LbOs::GetExecutablePath())
{
    LbOs::SChildOptions options;
    options.program = program;
    options.commandLine = L"tests --gtest_also_run_disabled_tests --gtest_filter=ProcessChild.DISABLED_" + name;
    options.isSilent = true;
    options.endsWithOwner = false;
    return LbOs::CChildProcess::Start(options);
}

TEST(ProcessChild, DISABLED_HasAParentOfTheSameName)
{
    EXPECT_TRUE(LuTestSuiteUtils::CheckForSameParentProcess());
}

TEST(ProcessChild, DISABLED_HasAParentOfAnotherName)
{
    EXPECT_FALSE(LuTestSuiteUtils::CheckForSameParentProcess());
}

TEST(ProcessChild, DISABLED_Waits)
{
    const auto ready = LbOs::CNamedEvent::Open(LbOs::GetEnvironmentText(L"LUTESTSUITE_TEST_READY"));
    ASSERT_NE(ready, nullptr);
    ready->Set();
    LuTestSuiteUtils::EnterDebugBreakpoint();
}

/// Starts the next disabled test and ends before that test queries its parent.
TEST(ProcessChild, DISABLED_LeavesAnOrphan)
{
    const auto ready = LbOs::CNamedEvent::Open(LbOs::GetEnvironmentText(L"LUTESTSUITE_TEST_READY"));
    const auto orphan = startOwnTest(L"HasLostItsParent");
    ASSERT_TRUE(orphan && ready);
    EXPECT_EQ(ready->Wait(c_Long), LbOs::EEventWait::Signaled);
}

TEST(ProcessChild, DISABLED_HasLostItsParent)
{
    const std::wstring name = LbOs::GetEnvironmentText(L"LUTESTSUITE_TEST_READY");
    const auto ready = LbOs::CNamedEvent::Open(name);
    const auto left = LbOs::CNamedEvent::Open(name + L"-left");
    const auto refused = LbOs::CNamedEvent::Open(name + L"-refused");
    ASSERT_TRUE(ready && left && refused);
    ready->Set();
    ASSERT_EQ(left->Wait(c_Long), LbOs::EEventWait::Signaled);
    try
    {
        LuTestSuiteUtils::CheckForSameParentProcess();
    }
    catch (const LbException& exception)
    {
        EXPECT_EQ(exception.GetSourceFile(), L"lutestsuiteutils");
        refused->Set();
    }
}

std::wstring getProbe()
{
    return GetProbeOptions(L"").program;
}

TEST(ExecuteWithTimeout, IsSilentWhenTheProcessEndsInTime)
{
    const CapturedOutput output;
    LuTestSuiteUtils::ExecuteWithTimeout(getProbe(), L"exit 7", L"", c_LongSec);

    EXPECT_EQ(output.GetText(), L"");
}

TEST(ExecuteWithTimeout, TerminatesTheProcessAfterTheTimeoutAndWarns)
{
    const CapturedOutput output;
    LuTestSuiteUtils::ExecuteWithTimeout(getProbe(), L"sleep", L"", 1);

    const std::wstring text =
        LbFormat(L"Warnung: Prozess processprobe%s nach 1 Sekunden abgebrochen.\n", LbOs::c_ExecutableSuffix);
    ASSERT_EQ(output.GetLines().size(), 1U);
    EXPECT_EQ(output.GetLines()[0], CapturedOutput::BoldColored(text, LuColor::c_GOLDENROD));
}

TEST(ExecuteWithTimeout, TerminatesTheProcessWithItsDescendants)
{
    CProbeLine line;
    // Long enough for two processes to start on a busy machine.
    LuTestSuiteUtils::ExecuteWithTimeout(getProbe(), L"parent " + line.GetName(), L"", 5);

    EXPECT_TRUE(line.WaitReady());
    EXPECT_TRUE(line.IsGone());
}

TEST(ExecuteWithTimeout, LeavesDescendantsOfAProcessThatEndsInTimeRunning)
{
    const ProgramCopy program(L"processprobe", L"Probe-" + LbUniqueId::Generate());
    CProbeLine line;
    LuTestSuiteUtils::ExecuteWithTimeout(program.GetPath(), L"starter " + line.GetName(), L"", c_LongSec);

    EXPECT_TRUE(line.WaitReady());
    EXPECT_TRUE(line.IsAlive());
    const CapturedOutput output;
    LuTestSuiteUtils::KillAllByName(program.GetFileName());
    EXPECT_TRUE(line.WaitGone());
}

TEST(ExecuteWithTimeout, PassesOnArgumentsAndWorkingDirectory)
{
    const ScopedFolder folder;
    const std::wstring file = folder.GetPathOf(L"mit Lücke.txt");
    const std::wstring directory = folder.MakeFolder(L"hier und da");

    LuTestSuiteUtils::ExecuteWithTimeout(getProbe(), L"arguments " + LbCommandLine::Quote(file) + L" \"ä b\\\\\"",
                                         directory, c_LongSec);

    const std::string text = LbFileSystem::ReadFile8Bit(file);
    EXPECT_NE(text.find("\narguments\n" + LbEncoding::ToUtf8(file) + "\nä b\\\n"), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with("hier und da\n")) << text;
}

TEST(ExecuteWithTimeout, AcceptsExecutablesWithBlanksInTheirPaths)
{
    const ScopedFolder folder;
    const ProgramCopy program(L"processprobe", L"mit Blank " + LbUniqueId::Generate());
    const std::wstring file = folder.GetPathOf(L"a.txt");

    LuTestSuiteUtils::ExecuteWithTimeout(program.GetPath(), L"arguments " + LbCommandLine::Quote(file), L"", c_LongSec);

    EXPECT_TRUE(LbFileSystem::IsFile(file));
}

TEST(ExecuteWithTimeout, AcceptsExecutablesWithTabsAndQuotationMarksInTheirPaths)
{
    if (LbPath::c_Separator == L'\\')
    {
        GTEST_SKIP() << "files cannot have such names here";
    }
    const ScopedFolder folder;
    for (const wchar_t* const name : {L"mit\tTab ", L"\"mit\"Zeichen "})
    {
        const ProgramCopy program(L"processprobe", name + LbUniqueId::Generate());
        const std::wstring file = folder.GetPathOf(LbUniqueId::Generate());

        LuTestSuiteUtils::ExecuteWithTimeout(program.GetPath(), L"arguments " + LbCommandLine::Quote(file), L"",
                                             c_LongSec);

        EXPECT_TRUE(LbFileSystem::IsFile(file)) << LbEncoding::ToUtf8(name);
    }
}

TEST(ExecuteWithTimeout, WarnsWhenTheProcessCannotBeStarted)
{
    const CapturedOutput output;
    LuTestSuiteUtils::ExecuteWithTimeout(L"gibt-es-nicht", L"a b", L"dort", c_LongSec);

    ASSERT_EQ(output.GetLines().size(), 3U);
    EXPECT_EQ(output.GetLines()[0],
              CapturedOutput::BoldColored(L"Warnung: Prozess gibt-es-nicht konnte nicht gestartet werden:\n",
                                          LuColor::c_GOLDENROD));
    EXPECT_EQ(output.GetLines()[1], CapturedOutput::Plain(L"         Argumente: a b\n"));
    EXPECT_EQ(output.GetLines()[2], CapturedOutput::Plain(L"         Working Directory: dort\n"));
}

TEST(KillAllByName, EndsAllProcessesWithTheName)
{
    const ProgramCopy program(L"processprobe", L"Probe-" + LbUniqueId::Generate());
    LbOs::SChildOptions options;
    options.program = program.GetPath();
    options.commandLine = L"probe sleep";
    const auto first = LbOs::CChildProcess::Start(options);
    const auto second = LbOs::CChildProcess::Start(options);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    const CapturedOutput output;

    LuTestSuiteUtils::KillAllByName(program.GetFileName());

    EXPECT_TRUE(first->Wait(c_Long));
    EXPECT_TRUE(second->Wait(c_Long));
    const std::wstring line = LbFormat(L"Aktiver Prozess %s gefunden. Wird terminiert.\n", program.GetFileName());
    EXPECT_EQ(output.GetText(), line + line);
}

TEST(KillAllByName, DistinguishesLetterCases)
{
    const ProgramCopy program(L"processprobe", L"Probe-" + LbUniqueId::Generate());
    LbOs::SChildOptions options;
    options.program = program.GetPath();
    options.commandLine = L"probe sleep";
    const auto child = LbOs::CChildProcess::Start(options);
    ASSERT_NE(child, nullptr);
    const CapturedOutput output;

    LuTestSuiteUtils::KillAllByName(L"p" + program.GetFileName().substr(1));

    EXPECT_TRUE(child->IsRunning());
    EXPECT_EQ(output.GetText(), L"");
    child->Terminate();
}

TEST(KillAllByName, WarnsWhenTheSystemDoesNotListItsProcesses)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers open files of their own";
#endif
    const CapturedOutput output;
    if (!LbOs::SetFilesForbidden(true))
    {
        GTEST_SKIP() << "listing processes cannot be made to fail here";
    }
    LuTestSuiteUtils::KillAllByName(L"gibt-es-nicht");
    LbOs::SetFilesForbidden(false);

    ASSERT_EQ(output.GetLines().size(), 1U);
    EXPECT_EQ(output.GetLines()[0],
              CapturedOutput::BoldColored(L"Warnung: Prozess Snapshot konnte nicht erstellt werden.\n",
                                          LuColor::c_GOLDENROD));
}

/// Tests a child that has ended: on Linux, a zombie has no name.
TEST(KillAllByName, DoesNotTouchProcessesWithoutName)
{
    const auto child = StartProbe(L"exit 0");
    ASSERT_NE(child, nullptr);
    ASSERT_TRUE(child->Wait(c_Long));
    const CapturedOutput output;

    LuTestSuiteUtils::KillAllByName(L"");

    EXPECT_EQ(output.GetText(), L"");
}

TEST(CheckForSameParentProcess, IsTrueForAChildOfTheSameExecutable)
{
    const auto child = startOwnTest(L"HasAParentOfTheSameName");
    ASSERT_NE(child, nullptr);

    ASSERT_TRUE(child->Wait(c_Long));
    EXPECT_EQ(child->GetExitStatus(), 0);
}

TEST(CheckForSameParentProcess, ThrowsWhenTheParentHasEnded)
{
    const std::wstring name = LbUniqueId::Generate();
    const ScopedEnvironmentVariable variable(L"LUTESTSUITE_TEST_READY", name);
    const auto ready = LbOs::CNamedEvent::Create(name);
    const auto left = LbOs::CNamedEvent::Create(name + L"-left");
    const auto refused = LbOs::CNamedEvent::Create(name + L"-refused");
    auto parent = startOwnTest(L"LeavesAnOrphan");
    ASSERT_NE(parent, nullptr);
    ASSERT_TRUE(parent->Wait(c_Long));
    EXPECT_EQ(parent->GetExitStatus(), 0);
    // Windows forgets an ended process only when its last handle is closed.
    parent.reset();
    left->Set();

    EXPECT_EQ(refused->Wait(c_Long), LbOs::EEventWait::Signaled);
}

TEST(CheckForSameParentProcess, IsTrueForAFork)
{
    const std::optional<int> status =
        LbOs::RunInFork([] { return LuTestSuiteUtils::CheckForSameParentProcess() ? 0 : 1; });
    if (!status)
    {
        GTEST_SKIP() << "processes do not fork here";
    }
    EXPECT_EQ(status, 0);
}

TEST(CheckForSameParentProcess, IsFalseForAChildOfAnotherExecutable)
{
    const std::wstring own = LbPath::GetLastComponent(LbOs::GetExecutablePath());
    const std::wstring stem = own.substr(0, own.size() - std::wstring_view(LbOs::c_ExecutableSuffix).size());
    const ProgramCopy program(stem, L"Kopie-" + LbUniqueId::Generate());

    const auto child = startOwnTest(L"HasAParentOfAnotherName", program.GetPath());
    ASSERT_NE(child, nullptr);

    ASSERT_TRUE(child->Wait(c_Long));
    EXPECT_EQ(child->GetExitStatus(), 0);
}

TEST(EnterDebugBreakpoint, BlocksTheProcess)
{
    const std::wstring name = LbUniqueId::Generate();
    const ScopedEnvironmentVariable variable(L"LUTESTSUITE_TEST_READY", name);
    const auto ready = LbOs::CNamedEvent::Create(name);
    const auto child = startOwnTest(L"Waits");
    ASSERT_NE(child, nullptr);

    EXPECT_EQ(ready->Wait(c_Long), LbOs::EEventWait::Signaled);
    EXPECT_FALSE(child->Wait(100));
    child->Terminate();
}

TEST(OsProcesses, ContainTheCurrentProcess)
{
    const std::vector<LbOs::SProcess> processes = LbOs::ListProcesses();

    const auto own = std::ranges::find(processes, LbOs::GetProcessId(), &LbOs::SProcess::id);
    ASSERT_NE(own, processes.end());
    EXPECT_EQ(own->executableName, LbPath::GetLastComponent(LbOs::GetExecutablePath()));
    EXPECT_EQ(LbOs::GetProcessExecutableName(own->id), own->executableName);
}

/// After the listing, another process may have got the id, so the name is compared, too.
TEST(OsProcesses, AreKilledOnlyIfTheirNameMatches)
{
    if (LbPath::c_Separator == L'\\')
    {
        GTEST_SKIP() << "the name of a process is not checked here";
    }
    const auto child = StartProbe(L"sleep");
    ASSERT_NE(child, nullptr);
    const std::vector<unsigned long> ids = LbOs::ListChildren();
    ASSERT_FALSE(ids.empty());
    for (const unsigned long id : ids)
    {
        LbOs::KillProcess({id, L"anders"});
    }
    // A process may end slightly after it was told to.
    EXPECT_FALSE(child->Wait(200));
    for (const unsigned long id : ids)
    {
        LbOs::KillProcess({id, L"processprobe"});
    }
    EXPECT_TRUE(child->Wait(c_Long));
}

} // namespace

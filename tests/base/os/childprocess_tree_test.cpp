#include "base/os/childprocess.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/os/namedevent.h"
#include "tests/support/os/testaids.h"
#include "tests/support/probe.h"

namespace
{

using LbOs::CChildProcess;

constexpr std::uint32_t c_Long = 60000;

TEST(OsChildProcessTrees, EndWhenTheObjectOfTheirRootIsDestroyed)
{
    CProbeLine line;
    auto child = StartProbe(L"parent " + line.GetName());
    ASSERT_NE(child, nullptr);
    ASSERT_TRUE(line.WaitReady());
    ASSERT_TRUE(line.IsAlive());

    child.reset();

    EXPECT_TRUE(line.IsGone());
}

/// The descendant has its own session, and its parent has ended. On Linux, only the environment of the descendant shows
/// to which root process it belongs.
TEST(OsChildProcessTrees, EndWhenTheirEndedRootIsTerminated)
{
    CProbeLine line;
    const auto child = StartProbe(L"daemon " + line.GetName());
    ASSERT_NE(child, nullptr);
    ASSERT_TRUE(line.WaitReady());
    ASSERT_TRUE(child->Wait(c_Long));
    EXPECT_EQ(child->GetExitStatus(), 0);
    ASSERT_TRUE(line.IsAlive());

    child->Terminate();

    EXPECT_TRUE(line.IsGone());
}

TEST(OsChildProcessTrees, EndWhenTheObjectOfTheirEndedRootIsDestroyed)
{
    CProbeLine line;
    auto child = StartProbe(L"orderly " + line.GetName());
    ASSERT_NE(child, nullptr);
    ASSERT_TRUE(line.WaitReady());
    ASSERT_TRUE(child->Wait(c_Long));
    EXPECT_EQ(child->GetExitStatus(), 0);

    child.reset();

    EXPECT_TRUE(line.IsGone());
}

/// Also holds if the test itself runs in a child process: then both processes inherit the mark of that child.
TEST(OsChildProcessTrees, LeaveOtherTreesRunningWhenTerminated)
{
    CProbeLine line;
    const auto other = StartProbe(L"answer " + line.GetName());
    const auto child = StartProbe(L"exit 3");
    ASSERT_TRUE(other && child);
    ASSERT_TRUE(child->Wait(c_Long));

    child->Terminate();

    EXPECT_TRUE(line.IsAlive());
}

/// Calls `ask` until it returns true; false after half a minute.
template<typename F>
bool WaitUntil(const F& ask)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!ask())
    {
        if (std::chrono::steady_clock::now() > end)
        {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

/// The parameter is the probe's command that starts another process.
class OsChildProcessTree : public testing::TestWithParam<const wchar_t*>
{
};

TEST_P(OsChildProcessTree, EndsWhenItsRootIsTerminated)
{
    CProbeLine line;
    const auto child = StartProbe(GetParam() + (L" " + line.GetName()));
    ASSERT_NE(child, nullptr);
    ASSERT_TRUE(line.WaitReady());
    ASSERT_TRUE(line.IsAlive());

    child->Terminate();

    EXPECT_TRUE(line.IsGone());
}

TEST_P(OsChildProcessTree, EndsWhenItsRootIsTerminatedWithoutFreeFileDescriptors)
{
    constexpr std::uint64_t c_Limit = 64;
    CProbeLine line;
    const auto child = StartProbe(GetParam() + (L" " + line.GetName()));
    ASSERT_NE(child, nullptr);
    ASSERT_TRUE(line.WaitReady());
    const std::optional<std::uint64_t> limit = LbOs::GetOpenFileLimit();
    if (!limit)
    {
        GTEST_SKIP() << "files are not limited here";
    }
    LbOs::SetOpenFileLimit(c_Limit);
    std::vector<std::FILE*> files;
    while (std::FILE* const file = std::fopen("/dev/null", "r"))
    {
        files.push_back(file);
    }

    child->Terminate();

    std::ranges::for_each(files, std::fclose);
    LbOs::SetOpenFileLimit(*limit);
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

    // The owner's child leads its own process group, so Terminate ends only the owner.
    owner->Terminate();

    // The keeper process, which ends the tree after its owner, needs a moment.
    EXPECT_TRUE(line.WaitGone());
}

TEST_P(OsChildProcessTree, EndsWhenItsOwnerIsTerminatedByTheOwnersParent)
{
    CProbeLine line;
    const auto owner = StartProbe(L"owner " + line.GetName() + L" " + GetParam());
    ASSERT_NE(owner, nullptr);
    ASSERT_TRUE(line.WaitReady());
    ASSERT_TRUE(line.IsAlive());

    owner->Terminate();

    EXPECT_TRUE(line.WaitGone());
}

INSTANTIATE_TEST_SUITE_P(Commands, OsChildProcessTree,
                         testing::Values(L"parent", L"runaway", L"outsider", L"headless", L"disguised"));

TEST_P(OsChildProcessTree, EndsWhenItsOwnerEndsAbruptly)
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
    ASSERT_TRUE(owner->Wait(c_Long));
    EXPECT_EQ(owner->GetExitStatus(), 3);

    EXPECT_TRUE(line.WaitGone());
}

/// Each child has a tree of its own, and all trees end at once.
TEST(OsChildProcessTrees, EndAllAtOnceWhenTheirOwnerIsKilled)
{
    using Clock = std::chrono::steady_clock;
    CProbeLine line;
    const auto areStarted = LbOs::CNamedEvent::Create(line.GetName() + L"-l");
    LbOs::SChildOptions options = GetProbeOptions(L"crowd " + line.GetName());
    options.endsWithOwner = false;
    const auto owner = CChildProcess::Start(options);
    ASSERT_NE(owner, nullptr);
    ASSERT_EQ(areStarted->Wait(c_Long, owner.get()), LbOs::EEventWait::Signaled);
    ASSERT_TRUE(line.IsAlive());
    const auto start = Clock::now();

    owner->Terminate();

    EXPECT_TRUE(line.WaitGone());
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(6));
}

/// The keeper may be killed together with all processes of its name, or by the out-of-memory killer.
TEST(OsChildProcessTrees, EndWithTheirOwnerEvenIfItsKeeperWasKilled)
{
    CProbeLine line;
    LbOs::SChildOptions options = GetProbeOptions(L"neglected " + line.GetName());
    options.endsWithOwner = false;
    const auto owner = CChildProcess::Start(options);
    ASSERT_NE(owner, nullptr);
    ASSERT_TRUE(line.WaitReady());
    ASSERT_TRUE(line.IsAlive());

    owner->Terminate();

    EXPECT_TRUE(line.WaitGone());
}

/// If a process is terminated from outside, the names of its descendants' events are still removed.
TEST(OsChildProcessTrees, RemoveTheEventNamesOfTheirProcesses)
{
    CProbeLine line;
    const auto child = StartProbe(L"owner " + line.GetName() + L" holder");
    ASSERT_NE(child, nullptr);
    ASSERT_TRUE(line.WaitReady());
    ASSERT_NE(LbOs::CNamedEvent::Open(line.GetName() + L"-h"), nullptr);

    child->Terminate();

    EXPECT_TRUE(WaitUntil([&line] { return LbOs::CNamedEvent::Open(line.GetName() + L"-h") == nullptr; }));
}

} // namespace

#include "base/os/processors.h"

#include <cstdint>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "base/lbpath.h"
#include "tests/support/os/testaids.h"
#include "tests/support/probe.h"

namespace
{

/// The number of processors that each thread may use after ShareProcessorWith, which has no effect on Windows.
std::uint32_t getSharing()
{
    return LbPath::c_Separator == L'\\' ? LbOs::CountOwnProcessors() : 1;
}

/// Binds a waiting child to the caller's processor; returns the number of processors that the child then counts.
std::optional<std::int64_t> getCountOf(const std::wstring& command)
{
    CProbeLine line;
    const auto child = StartProbe(command + L" " + line.GetName());
    if (!child || !line.WaitReady())
    {
        return std::nullopt;
    }
    LbOs::CThreadProcessors processors;
    processors.Read();
    processors.ShareProcessorWith(*child);
    processors.Restore();
    line.Ask();
    constexpr std::uint32_t c_Long = 60000;
    return child->Wait(c_Long) ? child->GetExitStatus() : std::nullopt;
}

TEST(OsThreadProcessors, BindTheThreadToOneProcessorUntilRestored)
{
    const std::uint32_t all = LbOs::CountOwnProcessors();
    const std::uint32_t shared = getSharing();
    const auto child = StartProbe(L"sleep");
    ASSERT_NE(child, nullptr);
    LbOs::CThreadProcessors processors;
    processors.Read();

    processors.ShareProcessorWith(*child);
    EXPECT_EQ(LbOs::CountOwnProcessors(), shared);

    processors.Restore();
    EXPECT_EQ(LbOs::CountOwnProcessors(), all);
}

TEST(OsThreadProcessors, MoveTheChildToTheSameProcessor)
{
    EXPECT_EQ(getCountOf(L"brought"), getSharing());
}

TEST(OsThreadProcessors, LetTheChildUseAllProcessorsAgain)
{
    EXPECT_EQ(getCountOf(L"freed"), LbOs::CountOwnProcessors());
}

TEST(OsThreadProcessors, AreRestoredOnce)
{
    const std::uint32_t shared = getSharing();
    const auto child = StartProbe(L"sleep");
    ASSERT_NE(child, nullptr);
    LbOs::CThreadProcessors all;
    all.Read();
    LbOs::CThreadProcessors processors;
    processors.Read();
    processors.Restore();
    all.ShareProcessorWith(*child);

    processors.Restore();
    EXPECT_EQ(LbOs::CountOwnProcessors(), shared);
    all.Restore();
}

TEST(OsThreadProcessors, ChangeNothingIfTheyWereNotRead)
{
    const std::uint32_t all = LbOs::CountOwnProcessors();
    const auto child = StartProbe(L"sleep");
    ASSERT_NE(child, nullptr);
    LbOs::CThreadProcessors processors;

    processors.ShareProcessorWith(*child);

    EXPECT_EQ(LbOs::CountOwnProcessors(), all);
}

} // namespace

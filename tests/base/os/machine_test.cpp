#include "base/os/machine.h"

#include <cstdlib>
#include <optional>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "tests/support/os/testaids.h"
#include "tests/support/scopedfolder.h"

namespace
{

TEST(Machine, HasAProcessor)
{
    const LbOs::SProcessor processor = LbOs::QueryProcessor();
    EXPECT_GE(processor.logicalProcessors, 1U);
    EXPECT_FALSE(processor.model.starts_with(L' ')) << testing::PrintToString(processor.model);
    EXPECT_GE(processor.megahertz, 0.0);
    EXPECT_LT(processor.megahertz, 100'000.0);
}

TEST(Machine, HasMemory)
{
    constexpr std::uint64_t c_Megabyte = 1 << 20U;
    EXPECT_GT(LbOs::GetPhysicalMemory(), 64 * c_Megabyte);
}

TEST(Machine, HasAName)
{
    EXPECT_NE(LbOs::GetMachineName(), L"");
    EXPECT_EQ(LbOs::GetMachineName().find(L'\0'), std::wstring::npos);
}

TEST(Machine, ReturnsTheSameValuesAgain)
{
    EXPECT_EQ(LbOs::QueryProcessor().model, LbOs::QueryProcessor().model);
    EXPECT_EQ(LbOs::GetPhysicalMemory(), LbOs::GetPhysicalMemory());
    EXPECT_EQ(LbOs::GetGraphicsAdapter(), LbOs::GetGraphicsAdapter());
}

TEST(Machine, TakesTheFirstGraphicsCardThatHasADriver)
{
    const ScopedFolder folder;
    folder.WriteFile(L"card0-HDMI-A-1/device/uevent", "DRIVER=kein Adapter\n");
    folder.WriteFile(L"card0/device/uevent", "MODALIAS=platform\n");
    folder.WriteFile(L"card10/device/uevent", "DRIVER=zehnter\n");
    folder.WriteFile(L"renderD128/device/uevent", "DRIVER=auch keiner\n");
    const std::optional<std::wstring> text = LbOs::DescribeGraphicsIn(folder.GetPath());
    if (!text)
    {
        GTEST_SKIP() << "the kernel has no such folder";
    }
    EXPECT_EQ(*text, L"zehnter");

    folder.WriteFile(L"card2/device/uevent", "DRIVER=zweiter\nPCI_ID=8086:1234\n");
    EXPECT_EQ(LbOs::DescribeGraphicsIn(folder.GetPath()), L"zweiter (PCI 8086:1234)");
    EXPECT_EQ(LbOs::DescribeGraphicsIn(folder.GetPathOf(L"fehlt")), L"");
}

/// Unknown on native Windows.
std::optional<bool> isHeadless()
{
    if (LbPath::c_Separator == L'/')
    {
        return !LbFileSystem::IsDirectory(L"/sys/class/drm/");
    }
    const bool isWine = LbFileSystem::IsDirectory(L"Z:\\proc\\self");
    return isWine ? std::optional(std::getenv("DISPLAY") == nullptr && std::getenv("WAYLAND_DISPLAY") == nullptr)
                  : std::nullopt;
}

TEST(Machine, HasNoGraphicsAdapterWithoutADisplay)
{
    if (!isHeadless().value_or(false))
    {
        GTEST_SKIP() << "there may be an adapter";
    }
    EXPECT_EQ(LbOs::GetGraphicsAdapter(), L"");
}

} // namespace

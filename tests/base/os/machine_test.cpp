#include "base/os/machine.h"

#include <cstdlib>
#include <functional>
#include <optional>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "tests/support/apart.h"
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

TEST(Machine, ReturnsTheSameValuesOnEachCall)
{
    EXPECT_EQ(LbOs::QueryProcessor().model, LbOs::QueryProcessor().model);
    EXPECT_EQ(LbOs::GetPhysicalMemory(), LbOs::GetPhysicalMemory());
    EXPECT_EQ(LbOs::GetGraphicsAdapter(), LbOs::GetGraphicsAdapter());
}

/// Calls `check` while `folder` hides the kernel's lists of devices; false if that is impossible. Hides the parent
/// folder of "drm", because some machines have no "drm".
bool checkWithDevices(const ScopedFolder& folder, const std::function<void()>& check)
{
    return CheckApart([&] { return LbOs::MountFolder(L"/sys/class", folder.GetPath()); }, check);
}

TEST(Machine, UsesTheFirstGraphicsCardThatHasADriver)
{
    const ScopedFolder folder;
    folder.WriteFile(L"drm/card0-HDMI-A-1/device/uevent", "DRIVER=kein Adapter\n");
    folder.WriteFile(L"drm/card0/device/uevent", "MODALIAS=platform\n");
    folder.WriteFile(L"drm/card10/device/uevent", "DRIVER=zehnter\n");
    folder.WriteFile(L"drm/renderD128/device/uevent", "DRIVER=auch keiner\n");
    const bool isChecked = checkWithDevices(folder, [&folder] {
        EXPECT_EQ(LbOs::GetGraphicsAdapter(), L"zehnter");

        folder.WriteFile(L"drm/card2/device/uevent", "DRIVER=zweiter\nPCI_ID=8086:1234\n");
        EXPECT_EQ(LbOs::GetGraphicsAdapter(), L"zweiter (PCI 8086:1234)");
    });
    if (!isChecked)
    {
        GTEST_SKIP() << "folders cannot be mounted here";
    }
}

TEST(Machine, HasNoGraphicsAdapterWithoutTheKernelsList)
{
    if (!checkWithDevices(ScopedFolder(), [] { EXPECT_EQ(LbOs::GetGraphicsAdapter(), L""); }))
    {
        GTEST_SKIP() << "folders cannot be mounted here";
    }
}

/// True if the machine has no display; empty on native Windows, where that is unknown.
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
        GTEST_SKIP() << "this machine may have a display";
    }
    EXPECT_EQ(LbOs::GetGraphicsAdapter(), L"");
}

} // namespace

// The host that starts itself, or would.

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "base/os/platform.h"
#include "tests/support/binaryfolder.h"
#include "tests/support/hostprocess.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// The host under another name, with all that it needs but a host beside it.
std::wstring copyHost(const ScopedFolder& folder)
{
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(GetBinaryFolder())))
    {
        if (entry.path().extension() == std::filesystem::path(LbOs::c_ModuleSuffix))
        {
            std::filesystem::copy_file(entry.path(), folder.GetPathOf(entry.path().filename().wstring()));
        }
    }
    const std::wstring program = folder.GetPathOf(std::wstring(L"anders") + LbOs::c_ExecutableSuffix);
    std::filesystem::copy_file(std::filesystem::path(L"" LUTESTSUITE_HOST), std::filesystem::path(program));
    return program;
}

TEST(HostChildren, AreUnknownErrorsWithoutAHostBesideTheProgram)
{
    const ScopedFolder folder;
    const ScopedFolder data;
    data.MakeFolder(L"CPassedModel");
    SHostOptions options;
    options.program = copyHost(folder);

    const SHostRun run = RunHost({L"-d", data.GetPath(), L"--dll", L"resultmodels", L"-x"}, options);

    EXPECT_TRUE(FromPlatformLines(run.output)
                    .starts_with("CPassedModel\n"
                                 "\teins... FEHLER (Unbekannter Fehler)\n"
                                 "\tzwei mit Lücke... FEHLER (Unbekannter Fehler)\n"))
        << run.output;
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 1);
}

} // namespace

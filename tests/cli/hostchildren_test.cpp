// The host when it starts itself as a child.

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/os/platform.h"
#include "tests/support/binaryfolder.h"
#include "tests/support/hostprocess.h"
#include "tests/support/places.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// Copies the host under another name, with its libraries, into a folder without another host. Returns the copy's path.
std::wstring copyHost(const ScopedFolder& folder)
{
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(GetBinaryFolder())))
    {
        // On Linux, the name by which programs load a library may have a version after the suffix.
        if (entry.path().filename().wstring().find(LbOs::c_ModuleSuffix) != std::wstring::npos)
        {
            std::filesystem::copy_file(entry.path(), folder.GetPathOf(entry.path().filename().wstring()));
        }
    }
    const std::wstring program = folder.GetPathOf(std::wstring(L"anders") + LbOs::c_ExecutableSuffix);
    std::filesystem::copy_file(std::filesystem::path(L"" LUTESTSUITE_HOST), std::filesystem::path(program));
    return program;
}

/// Counts how often a text occurs in a report.
std::size_t countIn(const std::wstring& path, const std::string& text)
{
    const std::string report = LbFileSystem::ReadFile8Bit(path);
    std::size_t count = 0;
    for (std::size_t at = report.find(text); at != std::string::npos; at = report.find(text, at + 1))
    {
        ++count;
    }
    return count;
}

TEST(HostChildren, FailWithUnknownErrorsIfNoHostIsBesideTheProgram)
{
    const ScopedFolder folder;
    const ScopedFolder data;
    data.MakeFolder(L"CPassedModel");
    SHostOptions options;
    options.program = copyHost(folder);

    const std::wstring report = folder.GetPathOf(L"Bericht.xml");

    const SHostRun run = RunHost({L"-d", data.GetPath(), L"--dll", L"resultmodels", L"-x", L"--xml", report}, options);

    EXPECT_TRUE(FromPlatformLines(run.output)
                    .starts_with("CPassedModel\n"
                                 "\teins... FEHLER (Unbekannter Fehler)\n"
                                 "\tzwei mit Lücke... FEHLER (Unbekannter Fehler)\n"))
        << run.output;
    EXPECT_EQ(countIn(report, "Der Prozess des Testfalls konnte nicht gestartet werden"), 2U);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 1);
}

/// For runs with external or isolated cases.
class HostChildrenMode : public testing::TestWithParam<const wchar_t*>
{
};

/// The channel between host and child needs no open file, so it survives when a case closes all files.
TEST_P(HostChildrenMode, WorkAfterACaseInTheHostHasClosedAllFiles)
{
    const ScopedFolder folder;
    const ScopedFolder data;
    data.WriteFile(
        L"CCrashModel/#ExtraInfo.xml",
        "<ExtraInfo><TestCase name=\"geschlossene Dateien\"><External>false</External></TestCase></ExtraInfo>");
    const std::wstring report = folder.GetPathOf(L"Bericht.xml");

    const SHostRun run =
        RunHost({L"-d", data.GetPath(), L"--dll", L"crashmodels", L"-i", L":vorher$", L"-i", L":geschlossene Dateien$",
                 L"-i", L":nachher$", L"-r", L"10", L"--xml", report, GetParam()});

    EXPECT_EQ(run.exitStatus, 0) << run.output;
    EXPECT_EQ(countIn(report, "type=\"OK\""), 30U);
}

INSTANTIATE_TEST_SUITE_P(Options, HostChildrenMode, testing::Values(L"-x", L"-s"));

/// Runs with many workers. Each worker has files open for its child.
class HostChildrenParallel : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!CanLimitHost())
        {
            GTEST_SKIP() << "open files are not limited";
        }
        m_data.MakeFolder(L"CCrashModel");
    }

    /// Repeats the case that reports how many files its process may open.
    SHostRun Run(const std::wstring& workers, const SHostOptions& options, const std::wstring& mode = L"-x") const
    {
        return RunHost({L"-d", m_data.GetPath(), L"--dll", L"crashmodels", L"-i", L":offene Dateien$", L"-r", L"600",
                        L"-w", workers, L"--xml", m_report, mode},
                       options);
    }

    const ScopedFolder m_data;
    const ScopedFolder m_folder;
    const std::wstring m_report = m_folder.GetPathOf(L"Bericht.xml");
};

TEST_F(HostChildrenParallel, RunAllCasesUnderALowSoftLimitOfOpenFiles)
{
    SHostOptions options;
    options.openFilesLimit = 1024;

    const SHostRun run = Run(L"256", options);

    EXPECT_EQ(run.exitStatus, 0) << run.output;
    // The host raises the limit for itself only: cases see the original one.
    EXPECT_EQ(countIn(m_report, "info\">1024<"), 600U);
}

TEST_F(HostChildrenParallel, RunAllCasesUnderALowHardLimitOfOpenFiles)
{
    SHostOptions options;
    options.openFilesHardLimit = 64;

    const SHostRun run = Run(L"64", options);

    EXPECT_EQ(run.exitStatus, 0) << run.output;
    EXPECT_EQ(countIn(m_report, "info\">64<"), 600U);
}

/// For isolated cases, the host also starts spare children in advance, which need files, too.
TEST_F(HostChildrenParallel, RunAllIsolatedCasesUnderALowHardLimitOfOpenFiles)
{
    SHostOptions options;
    options.openFilesHardLimit = 64;

    const SHostRun run = Run(L"64", options, L"-s");

    EXPECT_EQ(run.exitStatus, 0) << run.output;
    EXPECT_EQ(countIn(m_report, "info\">64<"), 600U);
}

/// A run under a limit on the number of the user's processes.
struct SFewProcesses
{
    std::uint32_t limit;
    const wchar_t* caseName;
    std::vector<std::wstring> options;
};

class HostChildrenLimited : public testing::TestWithParam<SFewProcesses>
{
};

TEST_P(HostChildrenLimited, LeaveEnoughProcessesForTheirCases)
{
    if (!CanLimitHostProcesses())
    {
        GTEST_SKIP() << "processes cannot be limited";
    }
    const ScopedFolder folder;
    const ScopedFolder data;
    data.MakeFolder(L"CIntrusiveModel");
    for (const ScopedFolder* const shared : {&folder, &data})
    {
        std::filesystem::permissions(std::filesystem::path(shared->GetPath()), std::filesystem::perms::all);
    }
    const std::wstring report = folder.GetPathOf(L"Bericht.xml");
    SHostOptions options;
    options.processesLimit = GetParam().limit;
    std::vector<std::wstring> arguments = {L"-d",    data.GetPath(),
                                           L"--dll", L"intrusivemodels",
                                           L"-i",    L":" + std::wstring(GetParam().caseName) + L"$",
                                           L"-r",    L"16",
                                           L"--xml", report};
    arguments.insert(arguments.end(), GetParam().options.begin(), GetParam().options.end());

    const SHostRun run = RunHost(arguments, options);

    EXPECT_EQ(run.exitStatus, 0) << run.output;
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(countIn(report, "type=\"OK\""), 16U);
}

INSTANTIATE_TEST_SUITE_P(Runs, HostChildrenLimited,
                         testing::Values(SFewProcesses{20, L"braucht vier Prozesse", {L"-x"}},
                                         SFewProcesses{20, L"braucht vier Prozesse", {L"-s"}},
                                         SFewProcesses{30, L"zählt", {L"-x", L"-p", L"-w", L"8"}},
                                         SFewProcesses{30, L"zählt", {L"-s", L"-p", L"-w", L"8"}}));

} // namespace

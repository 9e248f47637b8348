// Tests of archive runs at the same time.

#include <algorithm>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/os/platform.h"
#include "testing/lutestsuite/archive/archive.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/places.h"
#include "tests/support/scopedenvironment.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuite::SArchiveRun;

/// Archive runs that use the program archivechild, which writes both reports, in place of the host.
class ConcurrentArchiveRuns : public testing::Test
{
protected:
    ConcurrentArchiveRuns() : m_binaryDir(m_folder.MakeFolder(L"bin"))
    {
        const std::wstring bin = LbPath::ToNative(L"" LUTESTSUITE_BIN_DIR "/");
        const std::wstring suffix = LbOs::c_ExecutableSuffix;
        for (const wchar_t* const host : {L"LuTestSuiteCLI", L"LuTestSuiteCLID"})
        {
            copy(bin + L"archivechild" + suffix, host + suffix);
        }
        for (const std::wstring& name : LbFileSystem::GetFileNames(bin))
        {
            if (LbPath::c_Separator == L'\\' && name.starts_with(L"lib") && name.ends_with(L".dll"))
            {
                copy(bin + name, name);
            }
        }
    }

    SArchiveRun Make(const std::wstring& config)
    {
        SArchiveRun run;
        run.binaryDir = m_binaryDir;
        run.config = config;
        run.platform = L"x64";
        run.dataDir = m_folder.MakeFolder(L"reports");
        run.outDir = m_folder.GetPathOf(L"Ausgabe");
        return run;
    }

    std::ptrdiff_t CountReports(const std::wstring& begin, const std::wstring& end) const
    {
        const std::vector<std::wstring> names = LbFileSystem::GetFileNames(m_folder.GetPathOf(L"Ausgabe/Archive"));
        return std::ranges::count_if(names, [&](const std::wstring& name) {
            return name.starts_with(L"Report.x64." + begin) && name.ends_with(end);
        });
    }

private:
    void copy(const std::wstring& from, const std::wstring& name) const
    {
        std::filesystem::copy_file(std::filesystem::path(from), std::filesystem::path(m_binaryDir + name));
    }

    ScopedUserFolder m_user;
    ScopedFolder m_folder;
    const std::wstring m_binaryDir;
};

TEST_F(ConcurrentArchiveRuns, KeepEachOthersReports)
{
    const CapturedOutput output;
    std::vector<std::thread> runs;
    for (const wchar_t* const config : {L"Release", L"Debug"})
    {
        constexpr std::uint32_t c_Long = 60;
        runs.emplace_back([run = Make(config)] { LuTestSuite::ExecuteArchiveRun(run, c_Long); });
    }
    std::ranges::for_each(runs, [](std::thread& run) { run.join(); });

    for (const wchar_t* const config : {L"release", L"debug"})
    {
        EXPECT_EQ(CountReports(config, L".xml"), 1);
        EXPECT_EQ(CountReports(config, L".html"), 1);
    }
    const std::wstring text = output.GetText();
    EXPECT_EQ(text.find(L"konnte nicht archiviert werden"), std::wstring::npos) << LbEncoding::ToUtf8(text);
}

} // namespace

#include "base/os/crash.h"

#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbpath.h"
#include "tests/support/probe.h"
#include "tests/support/scopedfolder.h"

namespace
{

constexpr bool c_IsWindows = LbPath::c_Separator == L'\\';

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool c_HasHandlersOfItsOwn = true;
#else
constexpr bool c_HasHandlersOfItsOwn = false;
#endif

/// The probe's name for a crash, and the exit status of the crashed process.
struct SCrash
{
    const wchar_t* how;
    std::int64_t windowsStatus;
    std::int64_t linuxStatus; ///< if negative, the negated number of a signal
};

void PrintTo(const SCrash& crash, std::ostream* stream)
{
    *stream << LbEncoding::ToUtf8(crash.how);
}

class OsCrash : public testing::TestWithParam<SCrash>
{
protected:
    void SetUp() override
    {
        if (c_HasHandlersOfItsOwn)
        {
            GTEST_SKIP() << "sanitizers handle crashes themselves";
        }
    }
};

TEST_P(OsCrash, ReportsTheCrashInTheExitStatus)
{
    LbOs::SChildOptions options = GetProbeOptions(std::wstring(L"crash ") + GetParam().how);
    options.isSilent = true;
    const auto child = LbOs::CChildProcess::Start(options);
    ASSERT_NE(child, nullptr);
    constexpr std::uint32_t c_Long = 60000;
    ASSERT_TRUE(child->Wait(c_Long));

    EXPECT_EQ(child->GetExitStatus(), c_IsWindows ? GetParam().windowsStatus : GetParam().linuxStatus);
}

/// Runs the probe with this command in the folder; returns the number of files there afterwards.
std::ptrdiff_t countDumps(const std::wstring& command, const ScopedFolder& folder)
{
    LbOs::SChildOptions options = GetProbeOptions(command);
    options.workingDirectory = folder.GetPath();
    options.isSilent = true;
    const auto child = LbOs::CChildProcess::Start(options);
    EXPECT_TRUE(child && child->Wait());
    return std::distance(std::filesystem::directory_iterator(std::filesystem::path(folder.GetPath())), {});
}

TEST_P(OsCrash, WritesNoDumpWhenDumpsAreOff)
{
    const std::wstring how = GetParam().how;
    if (countDumps(L"dump " + how, ScopedFolder()) == 0)
    {
        GTEST_SKIP() << "the system does not write dumps to the working directory";
    }

    EXPECT_EQ(countDumps(L"silence " + how, ScopedFolder()), 0);
}

INSTANTIATE_TEST_SUITE_P(Ways, OsCrash,
                         testing::Values(SCrash{L"access", 0xC0000005, -11}, SCrash{L"stack", 0xC00000FD, -11},
                                         SCrash{L"division", 0xC0000094, -8}, SCrash{L"abort", 3, -6},
                                         SCrash{L"terminate", 3, -6}),
                         [](const auto& way) { return LbEncoding::ToUtf8(way.param.how); });

TEST(OsCrashStatus, IsDerivedFromTheCrashCode)
{
    constexpr std::uint32_t c_AccessViolation = c_IsWindows ? 0xC0000005 : 11;
    constexpr std::int64_t c_Status = c_IsWindows ? std::int64_t{0xC0000005} : -11;

    EXPECT_EQ(LbOs::GetCrashStatus(c_AccessViolation), c_Status);
}

} // namespace

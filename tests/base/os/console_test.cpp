#include "base/os/console.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "tests/support/fulldevice.h"
#include "tests/support/os/testaids.h"
#include "tests/support/scopedfolder.h"

namespace
{

TEST(OsConsole, WritesInOrderWithPrintf)
{
    testing::internal::CaptureStdout();
    std::printf("first ");
    LbOs::WriteStandardOutput("second ");
    std::printf("third");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "first second third");
}

TEST(OsConsole, WritesNonAsciiBytesUnchanged)
{
    testing::internal::CaptureStdout();
    LbOs::WriteStandardOutput("gr\xC3\xB6\xC3\x9F"
                              "er %s");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "gr\xC3\xB6\xC3\x9F"
                                                      "er %s");
}

TEST(OsConsole, WaitsForSpaceInANonBlockingPipe)
{
    const std::string bytes(300'000, 'x');

    const auto captured = LbOs::CaptureThroughFullPipe([&bytes] { LbOs::WriteStandardOutput(bytes); });

    if (!captured)
    {
        GTEST_SKIP() << "pipes always block here";
    }
    EXPECT_EQ(captured->size(), bytes.size());
}

TEST(OsConsole, SetsTheCodePage)
{
    const std::uint32_t saved = LbOs::GetConsoleCodePage();
    if (saved == 0)
    {
        GTEST_SKIP() << "no console with a code page here";
    }
    constexpr std::uint32_t c_Latin1 = 28591;
    LbOs::SetConsoleCodePage(c_Latin1);
    EXPECT_EQ(LbOs::GetConsoleCodePage(), c_Latin1);
    LbOs::SetConsoleCodePage(saved);
    EXPECT_EQ(LbOs::GetConsoleCodePage(), saved);
}

TEST(OsConsole, WritesErrorsToTheErrorStream)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    LbOs::WriteStandardError("error");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(OsConsole, DoesNotTreatAFileAsATerminal)
{
    testing::internal::CaptureStdout();
    const bool isTerminal = LbOs::EnableTerminalSequences();
    testing::internal::GetCapturedStdout();
    EXPECT_FALSE(isTerminal);
}

TEST(OsConsole, ReadsEnvironmentVariables)
{
    EXPECT_NE(LbOs::GetEnvironmentText(L"PATH"), L"");
    EXPECT_EQ(LbOs::GetEnvironmentText(L"LUTESTSUITE_NEVER_SET"), L"");
}

/// Writes to a full device, then to a file that can be written.
[[noreturn]] void writeToFullDeviceFirst(const std::wstring& device, const std::wstring& file)
{
    std::FILE* const full = std::freopen(LbEncoding::ToUtf8(device).c_str(), "w", stdout);
    for (int line = 0; line < 3000; ++line)
    {
        LbOs::WriteStandardOutput("lost\n");
    }
    const bool isLost = LbOs::IsStandardOutputLost();
    std::FILE* const good = std::freopen(LbEncoding::ToUtf8(file).c_str(), "w", stdout);
    LbOs::WriteStandardOutput("kept");
    std::_Exit(full != nullptr && good != nullptr && isLost ? 0 : 1);
}

TEST(OsConsoleDeathTest, DropsOutputThatCannotBeWritten)
{
    const std::wstring device = GetFullDevice();
    if (device.empty())
    {
        GTEST_SKIP() << "no full device here";
    }
    // The name must be the same in the process that the death test starts.
    const std::wstring file = LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable) + L"console_test_output.txt";
    EXPECT_EXIT(writeToFullDeviceFirst(device, file), testing::ExitedWithCode(0), "");
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(file), "kept");
    LbOs::RemoveFile(file);
}

} // namespace

#include "base/os/process.h"

#include <array>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/os/files.h"
#include "tests/support/probe.h"
#include "tests/support/scopedfolder.h"

namespace
{

constexpr std::size_t c_MegaByte = 1024 * 1024;
constexpr std::size_t c_GigaByte = 1024 * c_MegaByte;

/// Calls itself `levels` times; each level uses at least 64 KB of stack.
std::size_t useStack(std::size_t levels)
{
    std::array<volatile char, 65536> used;
    used[levels % used.size()] = 1;
    const std::size_t below = levels == 0 ? 0 : useStack(levels - 1);
    return below + static_cast<std::size_t>(used[levels % used.size()]);
}

TEST(OsProcess, ReturnsTheProgramAsTheFirstArgument)
{
    const std::string program = testing::internal::GetArgvs().front();
    const char* const arguments[] = {program.c_str()};
    const auto result = LbOs::GetArguments(1, arguments);
    ASSERT_FALSE(result.empty());
    EXPECT_TRUE(LbPath::GetLastComponent(LbOs::GetExecutablePath()).starts_with(LbPath::GetLastComponent(result[0])));
}

TEST(OsProcess, ReadsAPartlyQuotedProgramName)
{
    const ScopedFolder folder;
    const std::wstring file = folder.GetPathOf(L"Datei");
    for (const wchar_t* const name : {L"Ordner/\"mit Blank\"/Programm", L"\"Ordner/mit Blank\"/Programm",
                                      L"\"Ordner/mit Blank/Programm\"", L"Ordner/mit\" \"Blank/Pro\"\"gramm"})
    {
        LbOs::SChildOptions options = GetProbeOptions(L"");
        options.commandLine = name + std::wstring(L" arguments ") + LbCommandLine::Quote(file) + L" --nope";
        const auto child = LbOs::CChildProcess::Start(options);
        ASSERT_NE(child, nullptr);
        ASSERT_TRUE(child->Wait());
        EXPECT_TRUE(LbFileSystem::ReadFile8Bit(file).starts_with("Ordner/mit Blank/Programm\narguments\n" +
                                                                 LbEncoding::ToUtf8(file) + "\n--nope\n"))
            << LbFileSystem::ReadFile8Bit(file);
    }
}

TEST(OsProcess, RunsAFunctionOnAnotherThread)
{
    const std::thread::id here = std::this_thread::get_id();
    std::thread::id there = here;
    LbOs::RunOnStack(c_MegaByte, [&there] { there = std::this_thread::get_id(); });
    EXPECT_NE(there, here);
}

TEST(OsProcess, ProvidesTheRequestedStackSize)
{
    std::size_t levels = 0;
    LbOs::RunOnStack(256 * c_MegaByte, [&levels] { levels = useStack(1600); });
    EXPECT_EQ(levels, 1601U);
}

TEST(OsProcess, RunsOnAStackOfOneGigaByte)
{
    std::size_t levels = 0;
    LbOs::RunOnStack(c_GigaByte, [&levels] { levels = useStack(200); });
    EXPECT_EQ(levels, 201U);
}

TEST(OsProcess, AcceptsAStackSizeOfOneByte)
{
    bool hasRun = false;
    LbOs::RunOnStack(1, [&hasRun] { hasRun = true; });
    EXPECT_TRUE(hasRun);
}

TEST(OsProcess, PassesExceptionsToTheCaller)
{
    const auto fail = [] { throw std::runtime_error("from the other stack"); };
    try
    {
        LbOs::RunOnStack(c_MegaByte, fail);
        ADD_FAILURE() << "no exception";
    }
    catch (const std::runtime_error& exception)
    {
        EXPECT_STREQ(exception.what(), "from the other stack");
    }
}

TEST(OsProcess, RefusesAnImpossibleStackSize)
{
    bool hasRun = false;
    EXPECT_THROW(LbOs::RunOnStack(c_GigaByte << 24U, [&hasRun] { hasRun = true; }), LbException);
    EXPECT_FALSE(hasRun);
}

TEST(OsProcess, HasAnId)
{
    EXPECT_NE(LbOs::GetProcessId(), 0U);
    EXPECT_EQ(LbOs::GetProcessId(), LbOs::GetProcessId());
}

TEST(OsProcessDeathTest, BreakIntoDebuggerEndsTheProcessWithoutADebugger)
{
    EXPECT_DEATH(LbOs::BreakIntoDebugger(), "");
}

} // namespace

#include "base/os/crash.h"

#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "tests/support/os/testaids.h"
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
                                         SCrash{L"terminate", 3, -6}, SCrash{L"exception", 0xE0000001, -6}),
                         [](const auto& way) { return LbEncoding::ToUtf8(way.param.how); });

TEST(OsCrashStatus, IsDerivedFromTheCrashCode)
{
    constexpr std::uint32_t c_AccessViolation = c_IsWindows ? 0xC0000005 : 11;
    constexpr std::int64_t c_Status = c_IsWindows ? std::int64_t{0xC0000005} : -11;

    EXPECT_EQ(LbOs::GetCrashStatus(c_AccessViolation), c_Status);
}

/// The exit status of a process that a signal or an exception has ended, and the beginning of its description.
using NamedEnd = std::pair<std::int64_t, std::string>;

std::vector<NamedEnd> listSignals()
{
    std::vector<NamedEnd> ends;
    for (const auto& [number, name] : LbOs::ListEndingSignals())
    {
        ends.emplace_back(-number, "Signal " + std::to_string(number) + " (" + name + ", ");
    }
    return ends;
}

NamedEnd makeException(std::int64_t code, const std::string& name)
{
    return {code, LbEncoding::ToUtf8(LbFormat(L"Ausnahme 0x%08X (%hs, ", static_cast<std::uint32_t>(code), name))};
}

std::vector<NamedEnd> listExceptions()
{
    return {makeException(0x40000015, "STATUS_FATAL_APP_EXIT"),
            makeException(0x80000001, "STATUS_GUARD_PAGE_VIOLATION"),
            makeException(0x80000002, "STATUS_DATATYPE_MISALIGNMENT"),
            makeException(0x80000003, "STATUS_BREAKPOINT"),
            makeException(0x80000004, "STATUS_SINGLE_STEP"),
            makeException(0xC0000005, "STATUS_ACCESS_VIOLATION"),
            makeException(0xC0000006, "STATUS_IN_PAGE_ERROR"),
            makeException(0xC0000008, "STATUS_INVALID_HANDLE"),
            makeException(0xC000000D, "STATUS_INVALID_PARAMETER"),
            makeException(0xC0000017, "STATUS_NO_MEMORY"),
            makeException(0xC000001D, "STATUS_ILLEGAL_INSTRUCTION"),
            makeException(0xC0000025, "STATUS_NONCONTINUABLE_EXCEPTION"),
            makeException(0xC0000026, "STATUS_INVALID_DISPOSITION"),
            makeException(0xC0000028, "STATUS_BAD_STACK"),
            makeException(0xC0000029, "STATUS_INVALID_UNWIND_TARGET"),
            makeException(0xC000007B, "STATUS_INVALID_IMAGE_FORMAT"),
            makeException(0xC000008C, "STATUS_ARRAY_BOUNDS_EXCEEDED"),
            makeException(0xC000008D, "STATUS_FLOAT_DENORMAL_OPERAND"),
            makeException(0xC000008E, "STATUS_FLOAT_DIVIDE_BY_ZERO"),
            makeException(0xC000008F, "STATUS_FLOAT_INEXACT_RESULT"),
            makeException(0xC0000090, "STATUS_FLOAT_INVALID_OPERATION"),
            makeException(0xC0000091, "STATUS_FLOAT_OVERFLOW"),
            makeException(0xC0000092, "STATUS_FLOAT_STACK_CHECK"),
            makeException(0xC0000093, "STATUS_FLOAT_UNDERFLOW"),
            makeException(0xC0000094, "STATUS_INTEGER_DIVIDE_BY_ZERO"),
            makeException(0xC0000095, "STATUS_INTEGER_OVERFLOW"),
            makeException(0xC0000096, "STATUS_PRIVILEGED_INSTRUCTION"),
            makeException(0xC00000FD, "STATUS_STACK_OVERFLOW"),
            makeException(0xC000012D, "STATUS_COMMITMENT_LIMIT"),
            makeException(0xC0000135, "STATUS_DLL_NOT_FOUND"),
            makeException(0xC0000138, "STATUS_ORDINAL_NOT_FOUND"),
            makeException(0xC0000139, "STATUS_ENTRYPOINT_NOT_FOUND"),
            makeException(0xC000013A, "STATUS_CONTROL_C_EXIT"),
            makeException(0xC0000142, "STATUS_DLL_INIT_FAILED"),
            makeException(0xC0000194, "STATUS_POSSIBLE_DEADLOCK"),
            makeException(0xC00001A5, "STATUS_INVALID_EXCEPTION_HANDLER"),
            makeException(0xC00002B4, "STATUS_FLOAT_MULTIPLE_FAULTS"),
            makeException(0xC00002B5, "STATUS_FLOAT_MULTIPLE_TRAPS"),
            makeException(0xC0000374, "STATUS_HEAP_CORRUPTION"),
            makeException(0xC0000409, "STATUS_STACK_BUFFER_OVERRUN"),
            makeException(0xC0000417, "STATUS_INVALID_CRUNTIME_PARAMETER"),
            makeException(0xC000041D, "STATUS_FATAL_USER_CALLBACK_EXCEPTION"),
            makeException(0xC0000420, "STATUS_ASSERTION_FAILURE"),
            makeException(0xE06D7363, "C++")};
}

class OsCrashName : public testing::TestWithParam<NamedEnd>
{
};

TEST_P(OsCrashName, IsPartOfTheDescriptionOfTheExitStatus)
{
    const std::string description = LbEncoding::ToUtf8(LbOs::DescribeExitStatus(GetParam().first));

    EXPECT_TRUE(description.starts_with(GetParam().second)) << description;
}

INSTANTIATE_TEST_SUITE_P(All, OsCrashName, testing::ValuesIn(c_IsWindows ? listExceptions() : listSignals()));

TEST(OsCrashDescription, ShowsUnknownExceptionsInHexadecimalForm)
{
    if (!c_IsWindows)
    {
        GTEST_SKIP() << "there are no exceptions of the system";
    }
    EXPECT_EQ(LbOs::DescribeExitStatus(0xE0000001), L"Ausnahme 0xE0000001");
    EXPECT_EQ(LbOs::DescribeExitStatus(0xC0001234), L"Ausnahme 0xC0001234");
    EXPECT_EQ(LbOs::DescribeExitStatus(0xA0000001), L"Ausnahme 0xA0000001");
}

TEST(OsCrashDescription, ShowsTheStatusesOfProgramsAsNumbers)
{
    EXPECT_EQ(LbOs::DescribeExitStatus(0), L"Status 0");
    EXPECT_EQ(LbOs::DescribeExitStatus(255), L"Status 255");
    // On Windows _exit(-1), _exit(-100000), and a result of COM.
    EXPECT_EQ(LbOs::DescribeExitStatus(0xFFFFFFFF), L"Status 4294967295");
    EXPECT_EQ(LbOs::DescribeExitStatus(0xFFFE7960), L"Status 4294867296");
    EXPECT_EQ(LbOs::DescribeExitStatus(0x80070005), L"Status 2147942405");
}

} // namespace

// Tests what a case's messages tell about the end of its process.

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbpath.h"
#include "tests/support/externalruntest.h"
#include "tests/support/scopedenvironment.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SRunResult;

constexpr bool c_IsWindows = LbPath::c_Separator == L'\\';

class RunExternalEnds : public ExternalRunTest
{
protected:
    std::wstring RunForMessages(const std::wstring& caseName)
    {
        LuTestSuiteSetup setup = MakeCrash({L"schreibt Fehlerzeilen", caseName, L"nachher"});
        // Only a process that does not end reaches this limit.
        setup.params.timeOutSec = 60;
        const SRunResult result = Run(setup);
        EXPECT_EQ(result.cases.at(0).messages, L"");
        EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Unknown);
        EXPECT_EQ(result.cases.at(2).messages, L"");
        return result.cases.at(1).messages;
    }
};

std::ptrdiff_t countLines(const std::wstring& messages, const std::wstring& start)
{
    std::ptrdiff_t count = 0;
    for (std::size_t at = messages.find(start); at != std::wstring::npos; at = messages.find(start, at + 1))
    {
        ++count;
    }
    return count;
}

/// A case, and the beginning of the reason in its messages.
struct SEnd
{
    const wchar_t* caseName;
    const wchar_t* linuxReason;
    const wchar_t* windowsReason;
};

void PrintTo(const SEnd& end, std::ostream* stream)
{
    *stream << LbEncoding::ToUtf8(end.caseName);
}

class RunExternalEndsOf : public RunExternalEnds, public testing::WithParamInterface<SEnd>
{
};

TEST_P(RunExternalEndsOf, NameTheSignalOrStatusOfTheProcess)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers handle crashes themselves";
#endif
    const std::wstring messages = RunForMessages(GetParam().caseName);

    const std::wstring reason = c_IsWindows ? GetParam().windowsReason : GetParam().linuxReason;
    EXPECT_NE(messages.find(models::c_EndOfProcess + reason), std::wstring::npos) << LbEncoding::ToUtf8(messages);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RunExternalEndsOf,
    testing::Values(
        SEnd{L"Zugriffsverletzung", L"Signal 11 (SIGSEGV, ", L"Ausnahme 0xC0000005 (STATUS_ACCESS_VIOLATION, "},
        SEnd{L"Stapelüberlauf", L"Signal 11 (SIGSEGV, ", L"Ausnahme 0xC00000FD (STATUS_STACK_OVERFLOW, "},
        SEnd{L"Stapelüberlauf ab 1024", L"Signal 11 (SIGSEGV, ", L"Ausnahme 0xC00000FD (STATUS_STACK_OVERFLOW, "},
        SEnd{L"Stapelüberlauf ab 2048", L"Signal 11 (SIGSEGV, ", L"Ausnahme 0xC00000FD (STATUS_STACK_OVERFLOW, "},
        SEnd{L"Stapelüberlauf ab 3072", L"Signal 11 (SIGSEGV, ", L"Ausnahme 0xC00000FD (STATUS_STACK_OVERFLOW, "},
        SEnd{L"Division durch null", L"Signal 8 (SIGFPE, ", L"Ausnahme 0xC0000094 (STATUS_INTEGER_DIVIDE_BY_ZERO, "},
        SEnd{L"abort", L"Signal 6 (SIGABRT, ", L"Status 3\n"}, SEnd{L"exit", L"Status 0\n", L"Status 0\n"},
        SEnd{L"kein Speicher im Thread",
             L"Signal 6 (SIGABRT, Abbruch durch das Programm selbst), wohl aus Speichermangel\n",
             L"Status 3, wohl aus Speichermangel\n"},
        SEnd{L"spricht von Speicher und endet", L"Status 4\n", L"Status 4\n"},
        SEnd{L"schreibt viel und endet", L"Status 3\n", L"Status 3\n"}));

TEST_F(RunExternalEnds, NameTheStackOverflowOfAThread)
{
    if (c_IsWindows)
    {
        GTEST_SKIP() << "Wine ends only the thread, because its own handling of the exception exceeds the stack, too";
    }
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers handle crashes themselves";
#endif
    const std::wstring messages = RunForMessages(L"Stapelüberlauf im Thread");

    EXPECT_NE(messages.find(models::c_EndOfProcess + std::wstring(L"Signal 11 (SIGSEGV, ")), std::wstring::npos)
        << LbEncoding::ToUtf8(messages);
}

TEST_F(RunExternalEnds, FollowTheMessagesOfTheCase)
{
    EXPECT_TRUE(RunForMessages(L"Zugriffsverletzung")
                    .starts_with(std::wstring(L"\t\tINFO:  vor dem Absturz\n") + models::c_EndOfProcess));
}

TEST_F(RunExternalEnds, ShowTheTextOfAnUncaughtException)
{
    const std::wstring messages = RunForMessages(L"Exception im Thread");

    EXPECT_GE(countLines(messages, L"\t\tINFO:  "), 1) << LbEncoding::ToUtf8(messages);
    EXPECT_NE(messages.find(L"aus einem Thread"), std::wstring::npos) << LbEncoding::ToUtf8(messages);
}

TEST_F(RunExternalEnds, ShowTheLastLinesOfStandardError)
{
    const std::wstring messages = RunForMessages(L"schreibt viel und endet");

    EXPECT_EQ(countLines(messages, L"\t\tINFO:  "), 64);
    EXPECT_EQ(countLines(messages, L"\t\tINFO:  Zeile 136\n"), 0);
    EXPECT_EQ(countLines(messages, L"\t\tINFO:  Zeile 137\n"), 1);
    EXPECT_TRUE(messages.ends_with(L"\t\tINFO:  Zeile 200\n")) << LbEncoding::ToUtf8(messages);
}

TEST_F(RunExternalEnds, DoNotShowOutputOfOtherCases)
{
    EXPECT_EQ(RunForMessages(L"exit").find(L"aus dem Fall davor"), std::wstring::npos);
}

TEST_F(RunExternalEnds, CutLongLinesOfStandardError)
{
    EXPECT_TRUE(RunForMessages(L"schreibt lange Zeilen und endet")
                    .ends_with(L"\t\tINFO:  " + std::wstring(1000, L'x') + L"...\n"));
}

TEST_F(RunExternalEnds, ConvertInvalidBytesToText)
{
    EXPECT_TRUE(RunForMessages(L"schreibt Steuerzeichen und endet").ends_with(L"\t\tINFO:   [31mrot \u00ff\n"));
}

TEST_F(RunExternalEnds, ReportThatNoProcessCouldBeStarted)
{
    LuTestSuiteSetup setup = MakeCrash({L"vorher"});
    setup.unitTests[0].cases[0].parameters[L"TimeOutSec"] = 5U;
    // The system does not start programs with a command line of this length.
    setup.dlls.assign(1, std::wstring(200'000, L'x'));

    const std::wstring messages = Run(setup).cases.at(0).messages;

    EXPECT_TRUE(messages.starts_with(L"\t\tERROR: Der Prozess des Testfalls konnte nicht gestartet werden: "));
    EXPECT_TRUE(messages.ends_with(c_IsWindows ? L": Systemfehler 206\n" : L": Argument list too long\n"))
        << LbEncoding::ToUtf8(messages);
}

TEST_F(RunExternalEnds, LeaveNoFileBehind)
{
    const ScopedFolder folder;
    const ScopedEnvironmentVariable temporary(c_IsWindows ? L"TMP" : L"TMPDIR", folder.GetPath());
    const auto count = [&folder] {
        return std::distance(std::filesystem::directory_iterator(std::filesystem::path(folder.GetPath())), {});
    };
    LuTestSuiteSetup setup = MakeCrash({L"schreibt Fehlerzeilen", L"exit", L"nachher"});
    std::ptrdiff_t most = 0;
    setup.resultCallback = [&](ECaseRunResult) { most = std::max(most, count()); };

    Run(setup);

    EXPECT_EQ(most, 1);
    EXPECT_EQ(count(), 0);
}

} // namespace

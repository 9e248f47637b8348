// The host's output when a case crashes in its process.

#include <algorithm>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbpath.h"
#include "base/os/platform.h"
#include "tests/support/hostprocess.h"
#include "tests/support/os/testaids.h"
#include "tests/support/scopedfolder.h"

namespace
{

constexpr bool c_IsWindows = LbPath::c_Separator == L'\\';

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool c_HasSanitizer = true;
#else
constexpr bool c_HasSanitizer = false;
#endif

/// True if the signal ended the program. If a shell started it, the status is 128 plus the signal.
bool isEndBy(int signal, int status)
{
    return status == -signal || status == 128 + signal;
}

class HostCrashes : public testing::Test
{
protected:
    void SetUp() override { m_folder.MakeFolder(L"CCrashModel"); }

    SHostRun Run(const std::wstring& caseName, std::vector<std::wstring> options = {}) const
    {
        options.insert(options.begin(), {L"-d", m_folder.GetPath(), L"--dll", L"crashmodels", L"-i", L":" + caseName});
        return RunHost(options);
    }

    const ScopedFolder m_folder;
};

/// A case that crashes, with the name of the crash and the host's exit status on each platform.
struct SHostCrash
{
    const wchar_t* caseName;
    const char* linuxName;
    int signal;
    const char* windowsName;
    unsigned windowsStatus;
    bool isInModule; ///< the crashing instruction belongs to the test module
};

void PrintTo(const SHostCrash& crash, std::ostream* stream)
{
    *stream << LbEncoding::ToUtf8(crash.caseName);
}

class HostCrashesOf : public HostCrashes, public testing::WithParamInterface<SHostCrash>
{
protected:
    void SetUp() override
    {
        if (c_HasSanitizer)
        {
            GTEST_SKIP() << "sanitizers handle crashes themselves";
        }
        HostCrashes::SetUp();
    }

    /// Expects the crash in the last line; the C library may print something before it.
    static void ExpectLine(const SHostRun& run)
    {
        const SHostCrash& crash = GetParam();
        const std::string start = "Fehler: Absturz in 'CCrashModel:" + LbEncoding::ToUtf8(crash.caseName) +
                                  "': " + (c_IsWindows ? crash.windowsName : crash.linuxName) + " (";
        const std::size_t line = run.errors.find(start);
        ASSERT_NE(line, std::string::npos) << run.errors;
        EXPECT_EQ(run.errors.find('\n', line), run.errors.size() - 1) << run.errors;
        EXPECT_NE(run.errors.find(" an der Adresse 0x", line), std::string::npos) << run.errors;
        const std::string module = "crashmodels" + LbEncoding::ToUtf8(LbOs::c_ModuleSuffix) + "+0x";
        EXPECT_EQ(run.errors.find(module, line) != std::string::npos, crash.isInModule) << run.errors;
        const bool hasStatus = c_IsWindows ? static_cast<unsigned>(run.exitStatus) == crash.windowsStatus
                                           : isEndBy(crash.signal, run.exitStatus);
        EXPECT_TRUE(hasStatus) << run.exitStatus;
    }
};

TEST_P(HostCrashesOf, NameTheCaseAndTheCrash)
{
    ExpectLine(Run(GetParam().caseName + std::wstring(L"$")));
}

TEST_P(HostCrashesOf, NameTheCaseOfAWorker)
{
    ExpectLine(Run(GetParam().caseName + std::wstring(L"$"), {L"-w", L"2"}));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, HostCrashesOf,
    testing::Values(SHostCrash{L"Zugriffsverletzung", "SIGSEGV", 11, "STATUS_ACCESS_VIOLATION", 0xC0000005, true},
                    SHostCrash{L"Stapelüberlauf", "SIGSEGV", 11, "STATUS_STACK_OVERFLOW", 0xC00000FD, true},
                    SHostCrash{L"Division durch null", "SIGFPE", 8, "STATUS_INTEGER_DIVIDE_BY_ZERO", 0xC0000094, true},
                    SHostCrash{L"abort", "SIGABRT", 6, "abort", 3, false},
                    SHostCrash{L"terminate", "SIGABRT", 6, "abort", 3, false}));

class HostCrashesBySignals : public HostCrashes, public testing::WithParamInterface<std::pair<const wchar_t*, int>>
{
};

TEST_P(HostCrashesBySignals, NameTheCaseAndTheSignal)
{
    if (c_IsWindows)
    {
        GTEST_SKIP() << "there are no such signals";
    }
    const auto& [name, signal] = GetParam();
    const SHostRun run = Run(name + std::wstring(L"$"));

    const std::string narrow = LbEncoding::ToUtf8(name);
    EXPECT_TRUE(run.errors.starts_with("Fehler: Absturz in 'CCrashModel:" + narrow + "': " + narrow + " ("))
        << run.errors;
    EXPECT_EQ(std::ranges::count(run.errors, '\n'), 1) << run.errors;
    EXPECT_TRUE(isEndBy(signal, run.exitStatus)) << run.exitStatus;
}

INSTANTIATE_TEST_SUITE_P(Signals, HostCrashesBySignals,
                         testing::Values(std::pair(L"SIGPIPE", 13), std::pair(L"SIGALRM", 14),
                                         std::pair(L"SIGVTALRM", 26), std::pair(L"SIGPROF", 27),
                                         std::pair(L"SIGXCPU", 24), std::pair(L"SIGXFSZ", 25),
                                         std::pair(L"SIGUSR1", 10), std::pair(L"SIGUSR2", 12)),
                         [](const auto& signal) { return LbEncoding::ToUtf8(signal.param.first); });

TEST_F(HostCrashes, LeaveOtherSignalsToTheSystem)
{
    if (c_IsWindows)
    {
        GTEST_SKIP() << "there are no such signals";
    }
    const SHostRun outside = Run(L"SIGUSR1 von außen$");
    const SHostRun request = Run(L"SIGTERM$");

    EXPECT_EQ(outside.errors, "");
    EXPECT_TRUE(isEndBy(10, outside.exitStatus)) << outside.exitStatus;
    EXPECT_EQ(request.errors, "");
    EXPECT_TRUE(isEndBy(15, request.exitStatus)) << request.exitStatus;
}

TEST_F(HostCrashes, LeaveIgnoredSignalsIgnored)
{
    if (c_IsWindows)
    {
        GTEST_SKIP() << "there are no such signals";
    }
    SHostOptions options;
    options.ignoredSignal = L"PIPE";

    for (const std::vector<std::wstring>& modes : {std::vector<std::wstring>{}, {L"-x"}})
    {
        std::vector<std::wstring> arguments = modes;
        arguments.insert(arguments.end(), {L"-d", m_folder.GetPath(), L"--dll", L"crashmodels", L"-i", L":SIGPIPE$"});
        const SHostRun run = RunHost(arguments, options);

        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.exitStatus, 0);
    }
}

TEST_F(HostCrashes, NameAllRunningCases)
{
    if (c_HasSanitizer)
    {
        GTEST_SKIP() << "sanitizers handle crashes themselves";
    }
    const SHostRun run = Run(L"wartet auf den Absturz$", {L"-i", L":Absturz neben einem anderen$", L"-w", L"2"});

    EXPECT_TRUE(run.errors.starts_with("Fehler: Absturz in 'CCrashModel:Absturz neben einem anderen': ")) << run.errors;
    EXPECT_TRUE(
        run.errors.ends_with(ToPlatformLines("\nFehler: Zugleich in Arbeit: 'CCrashModel:wartet auf den Absturz'\n")))
        << run.errors;
    EXPECT_EQ(std::ranges::count(run.errors, '\n'), 2) << run.errors;
}

TEST_F(HostCrashes, NameTheCaseOfACrashedThread)
{
    if (c_HasSanitizer)
    {
        GTEST_SKIP() << "sanitizers handle crashes themselves";
    }
    const SHostRun run = Run(L"Zugriffsverletzung im Thread$");

    EXPECT_TRUE(run.errors.starts_with(std::string("Fehler: Absturz: ") +
                                       (c_IsWindows ? "STATUS_ACCESS_VIOLATION" : "SIGSEGV")))
        << run.errors;
    EXPECT_TRUE(
        run.errors.ends_with(ToPlatformLines("\nFehler: In Arbeit: 'CCrashModel:Zugriffsverletzung im Thread'\n")))
        << run.errors;
}

class HostCrashesOfThreads : public HostCrashes, public testing::WithParamInterface<const wchar_t*>
{
};

TEST_P(HostCrashesOfThreads, NameAStackOverflow)
{
    if (c_HasSanitizer)
    {
        GTEST_SKIP() << "sanitizers end what crashes";
    }
    const SHostRun run = Run(GetParam() + std::wstring(L"$"));

    EXPECT_TRUE(
        run.errors.starts_with(std::string("Fehler: Absturz: ") + (c_IsWindows ? "STATUS_STACK_OVERFLOW" : "SIGSEGV")))
        << run.errors;
    EXPECT_TRUE(run.errors.ends_with(
        ToPlatformLines("\nFehler: In Arbeit: 'CCrashModel:" + LbEncoding::ToUtf8(GetParam()) + "'\n")))
        << run.errors;
}

INSTANTIATE_TEST_SUITE_P(OfLbBase, HostCrashesOfThreads,
                         testing::Values(L"Stapelüberlauf im Vorrat", L"Stapelüberlauf in einer Nachricht"));

/// The page is a pipe without a reader, so the host blocks while it writes reports. Meanwhile, a thread of the case
/// waits for the XML report and crashes.
TEST_F(HostCrashes, AreReportedUntilTheReportsAreWritten)
{
    if (c_HasSanitizer)
    {
        GTEST_SKIP() << "sanitizers handle crashes themselves";
    }
    const ScopedFolder reports;
    const std::wstring xml = reports.GetPathOf(L"Bericht.xml");
    const std::wstring page = reports.GetPathOf(L"Seite.html");
    if (!LbOs::MakePipe(page))
    {
        GTEST_SKIP() << "pipes cannot be created in folders here";
    }
    SHostOptions options;
    options.variables = {{L"LUTESTSUITE_TEST_LINE", xml}};

    const SHostRun run = RunHost({L"-d", m_folder.GetPath(), L"--dll", L"crashmodels", L"-i",
                                  L":Zugriffsverletzung nach dem Lauf$", L"--xml", xml, L"--html", page},
                                 options);

    EXPECT_TRUE(run.errors.starts_with("Fehler: Absturz: SIGSEGV (")) << run.errors;
}

class HostCrashesDuringTheSearch : public HostCrashes, public testing::WithParamInterface<std::vector<std::wstring>>
{
};

TEST_P(HostCrashesDuringTheSearch, NameClassAndFolder)
{
    if (c_HasSanitizer)
    {
        GTEST_SKIP() << "sanitizers handle crashes themselves";
    }
    const std::wstring folder = m_folder.MakeFolder(L"CSearchCrashModel");
    const SHostRun run = Run(L"vorher$", GetParam());

    EXPECT_TRUE(run.errors.starts_with("Fehler: Absturz bei der Suche nach Testfällen von 'CSearchCrashModel' in '" +
                                       LbEncoding::ToUtf8(folder) +
                                       "': " + (c_IsWindows ? "STATUS_ACCESS_VIOLATION" : "SIGSEGV")))
        << run.errors;
    EXPECT_EQ(std::ranges::count(run.errors, '\n'), 1) << run.errors;
}

INSTANTIATE_TEST_SUITE_P(Modes, HostCrashesDuringTheSearch,
                         testing::Values(std::vector<std::wstring>{}, std::vector<std::wstring>{L"-q"},
                                         std::vector<std::wstring>{L"--list-disabled"},
                                         std::vector<std::wstring>{L"--list-duplicates"}));

TEST_F(HostCrashes, AreLeftToTheHandlerOfAModule)
{
    if (c_HasSanitizer)
    {
        GTEST_SKIP() << "sanitizers report the null pointer before it is used";
    }
    const SHostRun run = Run(L"eigene Behandlung$");

    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 7);
}

TEST_F(HostCrashes, ShowTheTextOfAnUncaughtException)
{
    const SHostRun run = Run(L"Exception im Thread$");

    EXPECT_NE(run.errors.find("aus einem Thread"), std::string::npos) << run.errors;
    // A thread that runs no case ends the process, so the host only shows which case is under way.
    EXPECT_NE(run.errors.find("Fehler: In Arbeit: 'CCrashModel:Exception im Thread'"), std::string::npos) << run.errors;
}

TEST_F(HostCrashes, AreNotReportedForForks)
{
    if (c_HasSanitizer)
    {
        GTEST_SKIP() << "sanitizers report each crash";
    }
    if (c_IsWindows)
    {
        GTEST_SKIP() << "processes do not fork";
    }
    const SHostRun run = Run(L"Absturz der Kopie$");

    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 0);
}

#if defined(__SANITIZE_ADDRESS__)
TEST_F(HostCrashes, NameTheCaseAfterTheReportOfASanitizer)
{
    const SHostRun run = Run(L"Stapelüberlauf$");

    EXPECT_NE(run.errors.find("AddressSanitizer"), std::string::npos) << run.errors;
    EXPECT_TRUE(
        run.errors.ends_with("Fehler: Absturz in 'CCrashModel:Stapelüberlauf': Sanitizer (siehe dessen Bericht)\n"))
        << run.errors;
}
#endif

} // namespace

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/os/heapfunctions.h"
#include "base/os/platform.h"
#include "tests/support/hostprocess.h"
#include "tests/support/places.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// Runs of the host with tracked cases.
class HostHeap : public testing::Test
{
protected:
    void SetUp() override
    {
        if (LbOs::GetHeapFunctions().malloc == nullptr)
        {
            GTEST_SKIP() << "this process does not use the heap of the shared run-time";
        }
    }
};

/// Cases without leaks, each of which is the first tracked case in its process.
class HostHeapFirstCase : public HostHeap, public testing::WithParamInterface<const wchar_t*>
{
protected:
    static void ExpectNoWarning(const std::vector<std::wstring>& threads)
    {
        const ScopedFolder folder;
        folder.MakeFolder(L"CHeapModel");

        SHostOptions options;
        options.variables = {{L"TZ", L""}};
        std::vector<std::wstring> arguments = {L"-d", folder.GetPath(), L"--dll", L"heapmodels", L"--track-heap", L"-i",
                                               L":"};
        arguments.back() += GetParam();
        arguments.insert(arguments.end(), threads.begin(), threads.end());

        const SHostRun run = RunHost(arguments, options);

        EXPECT_NE(run.output.find("1 Klasse, 1 Test"), std::string::npos) << run.output;
        EXPECT_EQ(run.output.find("WARNUNG"), std::string::npos) << run.output;
    }
};

TEST_P(HostHeapFirstCase, ShowsNoGrowthOfTheRunTime)
{
    ExpectNoWarning({});
}

TEST_P(HostHeapFirstCase, ShowsNoGrowthOfTheRunTimeOnAWorkerThread)
{
    ExpectNoWarning({L"-w", L"1"});
}

INSTANTIATE_TEST_SUITE_P(Cases, HostHeapFirstCase,
                         testing::Values(L"gibt alles", L"fängt eine", L"wirft eine", L"meldet viel", L"startet einen",
                                         L"druckt eine", L"schreibt in", L"rechnet Ortszeit", L"rechnet Sekunden",
                                         L"schreibt Ortszeit", L"nennt einen", L"ruft einmal", L"wartet auf"));

TEST_F(HostHeap, ReportsGrowthAsAWarningAndNotAsAFailure)
{
    const ScopedFolder folder;
    folder.MakeFolder(L"CHeapModel");

    const SHostRun run = RunHost({L"-d", folder.GetPath(), L"--dll", L"heapmodels", L"--track-heap", L"-i",
                                  L":wächst um", L"-i", L":gibt alles"});

    EXPECT_NE(run.output.find("WARNUNG (Ein Speicheranstieg von 16 Bytes wurde entdeckt)"), std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("\tgibt alles zurück... OK"), std::string::npos) << run.output;
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostHeap, DoesNotTrackAPreloadedAllocator)
{
    const std::wstring allocator = LbEncoding::FromUtf8(LUTESTSUITE_BIN_DIR "/preloadedallocator.so");
    if (!LbFileSystem::IsFile(allocator))
    {
        GTEST_SKIP() << "no allocator can be preloaded here";
    }
    const ScopedFolder folder;
    folder.MakeFolder(L"CHeapModel");
    const std::vector<std::wstring> arguments = {L"-d", folder.GetPath(), L"--dll", L"heapmodels", L"--track-heap",
                                                 L"-i", L":wächst um"};

    SHostOptions options;
    options.variables = {{L"LD_PRELOAD", allocator}};

    const SHostRun plain = RunHost(arguments);
    const SHostRun preloaded = RunHost(arguments, options);

    EXPECT_NE(plain.output.find("WARNUNG"), std::string::npos) << plain.output;
    EXPECT_NE(preloaded.output.find("1 Klasse, 1 Test"), std::string::npos) << preloaded.output;
    EXPECT_EQ(preloaded.output.find("WARNUNG"), std::string::npos) << preloaded.output;
    EXPECT_EQ(preloaded.errors, plain.errors);
}

TEST_F(HostHeap, GivesNoFalseWarningInTwentyRunsOfTheExamples)
{
    const std::wstring data = LbEncoding::FromUtf8(LUTESTSUITE_SOURCE_DIR) + L"/examples/data";
    for (int round = 0; round < 20; ++round)
    {
        const SHostRun run = RunHost({L"-d", data, L"--track-heap"});
        ASSERT_NE(run.output.find("COutcomeDemonstration"), std::string::npos) << round << ": " << run.output;
        ASSERT_NE(run.output.find("Erfolgreich:\t9 Klassen"), std::string::npos) << round << ": " << run.output;
        ASSERT_EQ(run.output.find("WARNUNG"), std::string::npos) << round << ": " << run.output;
    }
}

// Parallel cases in one process see each other's blocks, so the test omits the class whose cases never run in child
// processes.
TEST_F(HostHeap, GivesNoFalseWarningInParallelChildProcesses)
{
    const std::wstring data = LbEncoding::FromUtf8(LUTESTSUITE_SOURCE_DIR) + L"/examples/data";
    for (int round = 0; round < 3; ++round)
    {
        const SHostRun run =
            RunHost({L"-d", data, L"--track-heap", L"-x", L"-w", L"4", L"-v", L"-e", L"/CDeflateVectors:"});
        ASSERT_NE(run.output.find("][P"), std::string::npos) << round << ": " << run.output;
        ASSERT_NE(run.output.find("Erfolgreich:\t8 Klassen"), std::string::npos) << round << ": " << run.output;
        ASSERT_EQ(run.output.find("WARNUNG"), std::string::npos) << round << ": " << run.output;
    }
}

} // namespace

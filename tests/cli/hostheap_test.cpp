#include <string>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/os/heapfunctions.h"
#include "tests/support/hostprocess.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// Runs of the host whose cases are tracked.
class HostHeap : public testing::Test
{
protected:
    void SetUp() override
    {
        if (LbOs::GetHeapFunctions().malloc == nullptr)
        {
            GTEST_SKIP() << "the heap is not that of the shared run-time";
        }
    }
};

/// Cases that leave nothing behind, each as the first one that its process tracks.
class HostHeapFirstCase : public HostHeap, public testing::WithParamInterface<const wchar_t*>
{
};

TEST_P(HostHeapFirstCase, ShowsNoGrowthOfTheRunTime)
{
    const ScopedFolder folder;
    folder.MakeFolder(L"CHeapModel");

    const SHostRun run = RunHost(
        {L"-d", folder.GetPath(), L"--dll", L"heapmodels", L"--track-heap", L"-i", std::wstring(L":") + GetParam()});

    EXPECT_NE(run.output.find("1 Klasse, 1 Test"), std::string::npos) << run.output;
    EXPECT_EQ(run.output.find("WARNUNG"), std::string::npos) << run.output;
}

INSTANTIATE_TEST_SUITE_P(Cases, HostHeapFirstCase,
                         testing::Values(L"gibt alles", L"fängt eine", L"wirft eine", L"meldet viel",
                                         L"startet einen"));

TEST_F(HostHeap, ExampleFamilyIsTrackedTwentyTimesWithoutAFalseWarning)
{
    const std::wstring data = LbEncoding::FromUtf8(LUTESTSUITE_SOURCE_DIR) + L"/examples/data";
    for (int round = 0; round < 20; ++round)
    {
        const SHostRun run = RunHost({L"-d", data, L"-e", L"COutcomeDemonstration", L"--track-heap"});
        ASSERT_NE(run.output.find("Erfolgreich:\t8 Klassen"), std::string::npos) << round << ": " << run.output;
        ASSERT_EQ(run.output.find("WARNUNG"), std::string::npos) << round << ": " << run.output;
        ASSERT_EQ(run.exitStatus, 0);
    }
}

} // namespace

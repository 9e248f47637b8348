// Tests what a case costs apart from time: listings of folders and allocations.

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "base/lbfilelisting.h"
#include "base/luunittest.h"
#include "base/os/directories.h"
#include "base/os/heapfunctions.h"
#include "testing/lutestsuite/lutestsuiteheaptracker.h"
#include "tests/support/givenmessages.h"
#include "tests/support/os/systemcounts.h"
#include "tests/support/runtest.h"
#include "tests/support/scopedfolder.h"

namespace
{

constexpr int c_Files = 50;

/// Has many more sub-tests than a case needs. Each function is so large that std::function must allocate memory for it.
class CNamesMany : public LuUnitTest
{
    LB_RTTI(CNamesMany)

public:
    void InitSubtests() override
    {
        const std::size_t a = 1;
        const std::size_t b = 2;
        const std::size_t c = 3;
        const auto function = [this, a, b, c] { Check(a + b == c, L"sum"); };
        for (int count = 0; count < 1000; ++count)
        {
            AddSubtest(L"a name that does not fit into a text without memory", function);
        }
    }
};
LB_RTTI_CLASS(CNamesMany, LuUnitTest)

/// Overrides RunUnitTest, so that each object needs the sorted names of its files.
class CRunsFiles : public LuUnitTest
{
    LB_RTTI(CRunsFiles)

    void InitSubtests() override
    {
        AddFileSubtests(L"*.txt", [](const std::wstring&) {});
    }
    EResult RunUnitTest(std::uint32_t subtest) override { return LuUnitTest::RunUnitTest(subtest); }
};
LB_RTTI_CLASS(CRunsFiles, LuUnitTest)

/// The number of allocations that `function` makes; empty if they cannot be counted.
template<typename F>
std::optional<std::uint64_t> countAllocations(const F& function)
{
    if (LbOs::GetHeapFunctions().malloc == nullptr)
    {
        return std::nullopt;
    }
    std::uint64_t count = 0;
    {
        LuTestSuiteHeapTracker tracker;
        function();
        tracker.Deactivate();
        count = tracker.GetMallocCount() + tracker.GetReallocCount();
    }
    LuTestSuiteHeapTracker::UnhookAll();
    return count;
}

/// Makes the folder of a unit test with `count` files that pass; returns its path.
std::wstring makeFiles(const ScopedFolder& folder, const std::wstring& className, int count)
{
    for (int index = 0; index < count; ++index)
    {
        folder.WriteFile(className + L"/" + std::to_wstring(index) + L" as data set.txt", "gut");
    }
    return folder.GetPathOf(className);
}

/// Waits until the process shares the listing of the folder.
void awaitSharedListing(const std::wstring& folder)
{
    while (LbFileListing::Get(folder) != LbFileListing::Get(folder))
    {
        std::this_thread::yield();
    }
}

/// Waits until the last change of the folder was more than two seconds ago.
void awaitOldAge(const std::wstring& folder)
{
    using std::chrono::system_clock;
    const auto stamp = LbOs::GetDirectoryStamp(folder);
    const std::chrono::nanoseconds changeTime(stamp.value().changeTime);
    while (system_clock::now().time_since_epoch() - changeTime < std::chrono::milliseconds(2100))
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

TEST(RunCosts, IncludeNoAllocationForOtherSubtests)
{
    GivenMessages messages(L"");
    CNamesMany object;
    object.SetMessageStream(&messages);
    object.SelectSubtest(L"another");
    const auto count = countAllocations([&object] { object.InitSubtests(); });
    if (!count)
    {
        GTEST_SKIP() << "the heap of this process cannot be tracked";
    }

    EXPECT_EQ(*count, 0U);
}

TEST(RunCosts, IncludeAsManyAllocationsForFewFilesAsForManyFiles)
{
    const ScopedFolder folder;
    std::optional<std::uint64_t> counts[2];
    for (const int files : {1, 1000})
    {
        const std::wstring directory = makeFiles(folder, std::to_wstring(files), files) + L"/";
        awaitSharedListing(directory);
        CNamesMany object;
        object.SetDataDirectory(directory);
        counts[files == 1 ? 0 : 1] =
            countAllocations([&] { EXPECT_EQ(object.GetDataFileNames().size(), static_cast<std::size_t>(files)); });
    }
    if (!counts[0])
    {
        GTEST_SKIP() << "the heap of this process cannot be tracked";
    }

    EXPECT_LE(*counts[1], *counts[0] + 1);
}

class RunCostsOfNames : public RunTest
{
};

TEST_F(RunCostsOfNames, IncludeOnlyOneNamePerIsolatedCase)
{
    const ScopedFolder folder;
    folder.MakeFolder(L"CFormedNameModel");
    LuTestSuiteSetup setup = MakeSetup(folder.GetPath());
    setup.dlls = {L"namemodels"};
    setup.params.external = setup.params.isolated = true;
    setup.includes = {L":Fall 49$", L":Fall 10$"};
    const LuTestSuiteRun::SRunResult result = Run(setup);

    // The name "Fall 10" exists twice. Both cases run the first sub-test of that name, as a search of all names would.
    ASSERT_EQ(result.cases.size(), 3U);
    for (const LuTestSuiteRun::SCaseInfo& info : result.cases)
    {
        EXPECT_EQ(info.result, LuTestSuiteRun::ECaseRunResult::Ok);
        EXPECT_EQ(info.messages, L"\t\tINFO:  1\n");
    }
}

class RunCostsOfFiles : public RunTest
{
protected:
    /// How often the unit test's folder is listed during a run of all its files.
    std::optional<std::size_t> CountReads(LuTestSuiteSetup setup, const std::wstring& directory, int files = c_Files)
    {
        return LbOs::CountFolderReads(directory, [&] {
            const LuTestSuiteRun::SRunResult result = Run(setup);
            EXPECT_EQ(result.stats.total.GetCount(LuTestSuiteRun::ECaseRunResult::Ok),
                      static_cast<std::uint32_t>(files));
        });
    }

    const ScopedFolder m_folder;
    const std::wstring m_directory = makeFiles(m_folder, L"CDataSetModel", c_Files);
};

TEST_F(RunCostsOfFiles, AreOneListingOfTheirFolder)
{
    const auto reads = CountReads(MakeSetup(m_folder.GetPath()), m_directory);
    if (!reads)
    {
        GTEST_SKIP() << "listings cannot be counted";
    }

    EXPECT_EQ(*reads, 1U);
}

TEST_F(RunCostsOfFiles, AreOneListingOfTheirFolderOnSeveralThreads)
{
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
    setup.params.parallel = true;
    setup.params.workerThreads = 4;
    const auto reads = CountReads(setup, m_directory);
    if (!reads)
    {
        GTEST_SKIP() << "listings cannot be counted";
    }

    EXPECT_EQ(*reads, 1U);
}

TEST_F(RunCostsOfFiles, AreAtMostTwoListingsOfARecentlyChangedFolderForIsolatedCases)
{
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
    // To share the listing, the process reads the folder a second time as soon as a listing is certain to notice each
    // change.
    setup.params.external = setup.params.isolated = true;
    const auto reads = CountReads(setup, m_directory);
    if (!reads)
    {
        GTEST_SKIP() << "listings cannot be counted";
    }

    EXPECT_LE(*reads, 2U);
}

TEST_F(RunCostsOfFiles, AreFewListingsEvenIfEachIsolatedCaseAsksForItsFiles)
{
    // The first child processes read the folder themselves, until the run can share a listing that is certain to notice
    // each change. Starting all children takes much longer, so most of them use that listing.
    constexpr int c_Many = 300;
    const std::wstring directory = makeFiles(m_folder, L"inner/CAskingModel", c_Many);
    if (!LbOs::HasTimesOfThisSystem(directory))
    {
        GTEST_SKIP() << "the temporary folder is on a server, or on an unknown file system";
    }
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPathOf(L"inner"));
    setup.params.external = setup.params.isolated = true;
    const auto reads = CountReads(setup, directory, c_Many);
    if (!reads)
    {
        GTEST_SKIP() << "listings cannot be counted";
    }

    EXPECT_LT(*reads, static_cast<std::size_t>(c_Many / 2));
}

TEST_F(RunCostsOfFiles, AreFewListingsIfACaseInASharedProcessPrecedesIsolatedCases)
{
    constexpr int c_Many = 300;
    const std::wstring directory = makeFiles(m_folder, L"inner/CAskingModel", c_Many);
    m_folder.WriteFile(L"inner/CAskingModel/#ExtraInfo.xml",
                       "<ExtraInfo><TestCase name='*'><Isolated>true</Isolated></TestCase>"
                       "<TestCase name='0 *'><Isolated>false</Isolated></TestCase></ExtraInfo>");
    if (!LbOs::HasTimesOfThisSystem(directory))
    {
        GTEST_SKIP() << "the temporary folder is on a server, or on an unknown file system";
    }
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPathOf(L"inner"));
    setup.params.external = true;
    const auto reads = CountReads(setup, directory, c_Many);
    if (!reads)
    {
        GTEST_SKIP() << "listings cannot be counted";
    }

    EXPECT_LT(*reads, static_cast<std::size_t>(c_Many / 2));
}

TEST_F(RunCostsOfFiles, AreOneListingOfAnOldFolderEvenIfEachObjectNeedsIt)
{
    struct SMode
    {
        const wchar_t* name;
        void (*set)(LuTestSuiteRun::SParams&);
    };
    using SParams = LuTestSuiteRun::SParams;
    const SMode modes[] = {{L"plain", [](SParams&) {}},
                           {L"threads", [](SParams& params) { params.parallel = true; }},
                           {L"external", [](SParams& params) { params.external = true; }},
                           {L"isolated", [](SParams& params) { params.external = params.isolated = true; }}};
    std::wstring directory;
    for (const SMode& mode : modes)
    {
        directory = makeFiles(m_folder, std::wstring(mode.name) + L"/CChangingIndexModel", c_Files);
    }
    awaitOldAge(directory);
    if (!LbOs::HasTimesOfThisSystem(directory))
    {
        GTEST_SKIP() << "the temporary folder is on a server, or on an unknown file system";
    }
    for (const SMode& mode : modes)
    {
        LuTestSuiteSetup setup = MakeSetup(m_folder.GetPathOf(mode.name));
        setup.dlls = {L"changingmodels"};
        setup.params.workerThreads = 2;
        mode.set(setup.params);
        const auto reads = CountReads(setup, setup.dataDir + L"/CChangingIndexModel");
        if (!reads)
        {
            GTEST_SKIP() << "listings cannot be counted";
        }
        EXPECT_EQ(*reads, 1U) << mode.name;
    }
}

TEST_F(RunCostsOfFiles, AreNoListingsInChildrenIfTheRunAlreadyKnowsTheFolder)
{
    // This class needs the index of its case in each child.
    const std::wstring directory = makeFiles(m_folder, L"inner/CChangingIndexModel", c_Files);
    awaitSharedListing(directory + L"/");
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPathOf(L"inner"));
    setup.dlls = {L"changingmodels"};
    setup.params.external = true;
    setup.params.isolated = true;
    const auto reads = CountReads(setup, directory);
    if (!reads)
    {
        GTEST_SKIP() << "listings cannot be counted";
    }

    EXPECT_EQ(*reads, 0U);
}

TEST_F(RunCostsOfFiles, AreNoListingsInTheProcessIfItAlreadyKnowsTheFolder)
{
    const std::wstring directory = makeFiles(m_folder, L"inner/CRunsFiles", c_Files);
    awaitSharedListing(directory + L"/");
    const auto reads = CountReads(MakeSetup(m_folder.GetPathOf(L"inner")), directory);
    if (!reads)
    {
        GTEST_SKIP() << "listings cannot be counted";
    }

    EXPECT_EQ(*reads, 0U);
}

} // namespace

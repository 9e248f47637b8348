#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "base/luunittest.h"
#include "base/os/heapfunctions.h"
#include "testing/lutestsuite/lutestsuiteheaptracker.h"
#include "tests/modules/heapscript.h"
#include "tests/support/os/breakpoint.h"
#include "tests/support/runtest.h"

using LuTestSuiteRun::SCaseInfo;
using LuTestSuiteRun::SRunResult;

/// Allocates in the program itself, not in a module. Its names are short, because copies of longer names would
/// allocate.
class CHostHeap : public LuUnitTest
{
    LB_RTTI(CHostHeap)

    static inline std::unique_ptr<char[]> s_kept;

    void InitSubtests() override
    {
        AddSubtest(L"nil", [] {});
        AddSubtest(L"run", [] { s_kept.reset(new char[64]); });
        AddSubtest(L"end", [] { s_kept.reset(); });
    }
};
LB_RTTI_CLASS(CHostHeap, LuUnitTest)

namespace
{

std::atomic<int> s_breakpointCount = 0;

const std::wstring c_Warning = L"WARNUNG (Ein Speicheranstieg von 16 Bytes wurde entdeckt)";

/// Cases whose heap is tracked.
class RunHeap : public RunTest
{
protected:
    void SetUp() override
    {
        if (LbOs::GetHeapFunctions().malloc == nullptr)
        {
            GTEST_SKIP() << "this process does not use the heap of the shared run-time";
        }
    }

    static LuTestSuiteSetup makeTracked(const std::vector<std::wstring>& cases)
    {
        LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CHeapModel", cases)});
        setup.dlls = {L"heapmodels"};
        setup.params.trackHeap = true;
        return setup;
    }

    /// Number of breakpoints at which the cases of a run stop.
    int countBreakpoints(const LuTestSuiteSetup& setup)
    {
        s_breakpointCount = 0;
        LbOs::SetBreakpointHandler([] { ++s_breakpointCount; });
        Run(setup);
        LbOs::SetBreakpointHandler(nullptr);
        return s_breakpointCount;
    }

    SCaseInfo runTracked(const std::wstring& name) { return Run(makeTracked({name})).cases.at(0); }

    void expectBalanced(const std::wstring& name)
    {
        // The first run of the case also counts memory that the run-time and the module allocate once and keep, so only
        // the second run is checked.
        const SRunResult result = Run(makeTracked({name, name}));
        EXPECT_EQ(static_cast<std::int64_t>(result.cases.at(1).memoryGrowth), 0);
        EXPECT_FALSE(result.cases.at(1).warning);
    }
};

} // namespace

TEST_F(RunHeap, GrowthIsShownInGoldenrodAndTheCasePasses)
{
    const SRunResult result = Run(makeTracked({L"wächst um 16 Bytes", L"gibt 16 Bytes zurück"}));

    const auto lines = GetLinesFrom(c_Warning);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0], CapturedOutput::BoldColored(c_Warning, LuColor::c_GOLDENROD));
    EXPECT_EQ(result.cases.at(0).memoryGrowth, 16U);
    EXPECT_TRUE(result.cases.at(0).warning);
    EXPECT_EQ(result.cases.at(0).result, LuTestSuiteRun::ECaseRunResult::Ok);
    EXPECT_EQ(result.cases.at(1).memoryGrowth, 0U) << "the block belongs to another case";
}

TEST_F(RunHeap, GrowthIsNoWarningUnlessLeaksAreReported)
{
    LuTestSuiteSetup setup = makeTracked({L"wächst um 16 Bytes", L"gibt 16 Bytes zurück"});
    setup.params.reportMemLeak = false;

    const SRunResult result = Run(setup);

    EXPECT_EQ(result.cases.at(0).memoryGrowth, 16U);
    EXPECT_FALSE(result.cases.at(0).warning);
    EXPECT_EQ(m_output.GetText().find(L"WARNUNG"), std::wstring::npos);
}

TEST_F(RunHeap, UntrackedCaseHasNoHeapFigures)
{
    LuTestSuiteSetup setup = makeTracked({L"wächst um 16 Bytes", L"gibt 16 Bytes zurück"});
    setup.params.trackHeap = false;

    const SCaseInfo info = Run(setup).cases.at(0);

    EXPECT_EQ(info.memoryGrowth, 0U);
    EXPECT_EQ(info.allocations, 0U);
    EXPECT_EQ(info.peakMemory, 0U);
}

TEST_F(RunHeap, FirstTrackedCaseShowsNoGrowthOfTheRunTime)
{
    const SCaseInfo info = runTracked(L"gibt alles zurück");

    EXPECT_EQ(static_cast<std::int64_t>(info.memoryGrowth), 0);
    EXPECT_GT(info.allocations, 0U);
    EXPECT_GE(info.peakMemory, 100'000U);
}

TEST_F(RunHeap, MessagesDoNotCountAsGrowth)
{
    expectBalanced(L"meldet viel");
}

TEST_F(RunHeap, CaughtExceptionDoesNotCountAsGrowth)
{
    expectBalanced(L"wirft eine Ausnahme");
}

TEST_F(RunHeap, EndedThreadDoesNotCountAsGrowth)
{
    expectBalanced(L"startet einen Thread");
}

TEST_F(RunHeap, DumpListsTheBlocksThatAreLeft)
{
    LuTestSuiteSetup setup = makeTracked({L"wächst um 16 Bytes", L"gibt 16 Bytes zurück"});
    setup.params.dumpHeap = true;

    const std::wstring messages = Run(setup).cases.at(0).messages;

    EXPECT_TRUE(messages.starts_with(L"\t\tINFO:  Dump()...\n\t\tINFO:  CountMalloc ")) << messages.size();
    EXPECT_NE(messages.find(L"\t\tINFO:  CurrentAlloc 16 Bytes\n"), std::wstring::npos);
    EXPECT_NE(messages.find(L", Size 16 Bytes.\n"), std::wstring::npos);
    EXPECT_TRUE(messages.ends_with(L" Bytes.\n"));
}

TEST_F(RunHeap, NothingIsDumpedWithoutGrowth)
{
    LuTestSuiteSetup setup = makeTracked({L"gibt alles zurück"});
    setup.params.dumpHeap = true;

    EXPECT_EQ(Run(setup).cases.at(0).messages, L"");
}

TEST_F(RunHeap, KnownScriptOfAnotherModuleIsCountedExactly)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CHeapScript", {L"pre", L"nil", L"cmp", L"run", L"end"})});
    setup.dlls = {L"heapscript"};
    setup.params.trackHeap = true;

    const SRunResult result = Run(setup);

    const SCaseInfo& nothing = result.cases.at(1);
    const SCaseInfo& compared = result.cases.at(2);
    const SCaseInfo& script = result.cases.at(3);
    EXPECT_EQ(nothing.memoryGrowth, 0U);
    EXPECT_EQ(script.memoryGrowth, heapscript::c_Leak);
    EXPECT_EQ(compared.allocations, nothing.allocations + 1);
    EXPECT_EQ(script.allocations, nothing.allocations + heapscript::c_ScriptAllocations);
    EXPECT_EQ(compared.peakMemory - script.peakMemory, heapscript::c_ComparedPeak - heapscript::c_ScriptPeak);
}

TEST_F(RunHeap, OperatorNewOfTheHostIsCountedExactly)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CHostHeap", {L"nil", L"run", L"end"})});
    setup.dlls.clear();
    setup.params.trackHeap = true;

    const SRunResult result = Run(setup);

    EXPECT_EQ(result.cases.at(1).memoryGrowth, 64U);
    EXPECT_EQ(result.cases.at(1).allocations, result.cases.at(0).allocations + 1);
    EXPECT_EQ(result.cases.at(2).memoryGrowth, 0U);
}

TEST_F(RunHeap, StopsAtAllocationsOfTheObservedSize)
{
    LuTestSuiteSetup setup = makeTracked({L"gibt alles zurück", L"holt 54321 Bytes", L"holt 54321 Bytes"});
    setup.params.breakAllocSize = 54'321;

    EXPECT_EQ(countBreakpoints(setup), 2);
}

TEST_F(RunHeap, StopsAtTheAllocationWithTheObservedNumberOfEachCase)
{
    LuTestSuiteSetup setup = makeTracked({L"gibt alles zurück", L"holt 54321 Bytes"});
    setup.params.breakAllocId = 0;

    EXPECT_EQ(countBreakpoints(setup), 2);
}

TEST_F(RunHeap, NeverStopsWhenTheHeapIsNotTracked)
{
    LuTestSuiteSetup setup = makeTracked({L"holt 54321 Bytes"});
    setup.params.trackHeap = false;
    setup.params.breakAllocSize = 54'321;

    EXPECT_EQ(countBreakpoints(setup), 0);
}

TEST_F(RunHeap, DestroyingTheEnvironmentRestoresTheHeapsFunctions)
{
    void* (*volatile const allocate)(std::size_t) = std::malloc;
    auto environment = std::make_unique<LuTestSuiteEnvironment>();
    LuTestSuiteHeapTracker tracker;
    std::free(allocate(10));
    const std::uint64_t before = tracker.GetMallocCount();

    environment.reset();
    tracker.Reset();
    std::free(allocate(10));

    EXPECT_EQ(before, 1U);
    EXPECT_EQ(tracker.GetMallocCount(), 0U);
}

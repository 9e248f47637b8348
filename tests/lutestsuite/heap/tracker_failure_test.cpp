#include "base/inoncopyable.h"
#include "base/os/pages.h"
#include "base/os/platform.h"
#include "tests/lutestsuite/heap/heaptrackertest.h"
#include "tests/support/stuckthread.h"

namespace
{

/// Tests of heaps that cannot be patched at first.
class LuTestSuiteHeapTrackerFailure : public LuTestSuiteHeapTrackerTest
{
};

/// Temporarily replaces a function's first instruction with one that cannot be moved. No thread may call the function
/// while the object lives.
class UnmovableFunction : public INonCopyable
{
public:
    explicit UnmovableFunction(void* function) : m_begin(static_cast<std::uint8_t*>(function)), m_saved(*m_begin)
    {
        write(sc_uiInvalid);
    }
    ~UnmovableFunction() { write(m_saved); }

private:
    static constexpr std::uint8_t sc_uiInvalid = 0x06;

    void write(std::uint8_t byte)
    {
        LbOs::ProtectPages(m_begin, 1, LbOs::c_ProtectionAll);
        *m_begin = byte;
        LbOs::ProtectPages(m_begin, 1, LbOs::c_ProtectionReadExecute);
        LbOs::FlushCode(m_begin, 1);
    }

    std::uint8_t* const m_begin;
    const std::uint8_t m_saved;
};

} // namespace

TEST_F(LuTestSuiteHeapTrackerFailure, NothingIsCountedWhenOneFunctionCannotBePatched)
{
    LuTestSuiteHeapTracker tracker(false, false);
    {
        const UnmovableFunction function(LbOs::GetHeapFunctions().realloc);
        tracker.Initialize();
        tracker.Activate();
        s_free(s_malloc(100));
        tracker.Deactivate();
    }
    EXPECT_EQ(getOperationCount(tracker), 0U);
    tracker.Initialize();
    tracker.Activate();
    s_free(s_realloc(s_malloc(100), 200));
    tracker.Deactivate();
    EXPECT_EQ(getOperationCount(tracker), 3U) << "the second attempt succeeds";
}

TEST_F(LuTestSuiteHeapTrackerFailure, ThreadThatCannotBeStoppedDelaysTracking)
{
    const bool canStop = LbOs::c_PathSeparator == L'\\';
    StuckThread thread;
    LuTestSuiteHeapTracker tracker;
    s_free(s_malloc(100));
    EXPECT_EQ(getOperationCount(tracker), canStop ? 2U : 0U);
    tracker.Deactivate();
    thread.Release();
    tracker.Activate();
    tracker.Initialize();
    s_free(s_malloc(100));
    tracker.Deactivate();
    EXPECT_EQ(getOperationCount(tracker), 2U);
}

TEST_F(LuTestSuiteHeapTrackerFailure, UnhookingThatCannotStopAThreadEndsCountingAndCanBeRepeated)
{
    LuTestSuiteHeapTracker tracker;
    {
        const StuckThread thread;
        tracker.Reset();
        LuTestSuiteHeapTracker::UnhookAll();
        s_free(s_malloc(100));
        EXPECT_EQ(getOperationCount(tracker), 0U);
    }
    tracker.Initialize();
    s_free(s_malloc(100));
    EXPECT_EQ(getOperationCount(tracker), 2U);
    LuTestSuiteHeapTracker::UnhookAll();
    s_free(s_malloc(100));
    EXPECT_EQ(getOperationCount(tracker), 2U);
}

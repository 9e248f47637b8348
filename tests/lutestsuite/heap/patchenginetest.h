/// Shared by tests of the patch engine.
#pragma once

#include <gtest/gtest.h>

#include "base/os/heapfunctions.h"
#include "testing/lutestsuite/heap/patchengine.h"
#include "tests/lutestsuite/heap/codepages.h"

inline constexpr int c_Detoured = 1000;

inline int detour()
{
    return c_Detoured;
}
inline void* const c_Detour = reinterpret_cast<void*>(detour);

/// An initialized engine; the destructor shuts it down.
class CPatchEngineTest : public testing::Test
{
protected:
    CPatchEngineTest() { m_engine.Initialize(); }
    void SetUp() override
    {
        if (LbOs::GetHeapFunctions().malloc == nullptr)
        {
            GTEST_SKIP() << "a sanitizer patches functions itself and delays signals";
        }
    }
    ~CPatchEngineTest() override { m_engine.ShutDown(); }

    LuTestSuite::EPatchStatus patch(void* target)
    {
        const LuTestSuite::EPatchStatus status = m_engine.Create(target, c_Detour, m_trampoline);
        return status == LuTestSuite::EPatchStatus::Success ? m_engine.Enable(target) : status;
    }

    /// Expects `result` from the unpatched function, from the trampoline, and after the patch is disabled and removed.
    void expectMovable(const CodePages& code, int result)
    {
        ASSERT_EQ(code.Call(), result);
        ASSERT_EQ(patch(code.Get()), LuTestSuite::EPatchStatus::Success);
        EXPECT_EQ(code.Call(), c_Detoured);
        EXPECT_EQ(CodePages::Call(m_trampoline), result);
        EXPECT_EQ(m_engine.Disable(code.Get()), LuTestSuite::EPatchStatus::Success);
        EXPECT_EQ(code.Call(), result);
        EXPECT_EQ(CodePages::Call(m_trampoline), result);
        EXPECT_EQ(m_engine.Enable(code.Get()), LuTestSuite::EPatchStatus::Success);
        EXPECT_EQ(code.Call(), c_Detoured);
        EXPECT_EQ(m_engine.ShutDown(), LuTestSuite::EPatchStatus::Success);
        EXPECT_EQ(code.Call(), result);
        EXPECT_EQ(m_trampoline, code.Get());
    }

    LuTestSuite::CPatchEngine m_engine;
    void* m_trampoline = nullptr;
    const CodePages m_returnsOne{0xB8, 1, 0, 0, 0, 0xC3};
};

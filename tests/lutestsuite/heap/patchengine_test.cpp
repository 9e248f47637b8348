#include <cstring>

#include "tests/lutestsuite/heap/patchenginetest.h"

using LuTestSuite::CPatchEngine;
using LuTestSuite::EPatchStatus;
using LuTestSuite::STrampoline;

TEST_F(CPatchEngineTest, SecondInitializationIsRefused)
{
    EXPECT_EQ(m_engine.Initialize(), EPatchStatus::AlreadyInitialized);
    EXPECT_EQ(static_cast<int>(EPatchStatus::AlreadyInitialized), 1);
}

TEST_F(CPatchEngineTest, NothingWorksWithoutInitialization)
{
    EXPECT_EQ(m_engine.ShutDown(), EPatchStatus::Success);
    EXPECT_EQ(m_engine.Create(m_returnsOne.Get(), c_Detour, m_trampoline), EPatchStatus::NotInitialized);
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::NotInitialized);
    EXPECT_EQ(m_engine.EnableAll(), EPatchStatus::NotInitialized);
    EXPECT_EQ(m_engine.Disable(m_returnsOne.Get()), EPatchStatus::NotInitialized);
    EXPECT_EQ(m_engine.ShutDown(), EPatchStatus::NotInitialized);
    EXPECT_EQ(static_cast<int>(EPatchStatus::NotInitialized), 2);
}

TEST_F(CPatchEngineTest, TargetCannotBePatchedTwice)
{
    EXPECT_EQ(m_engine.Create(m_returnsOne.Get(), c_Detour, m_trampoline), EPatchStatus::Success);
    EXPECT_EQ(m_engine.Create(m_returnsOne.Get(), c_Detour, m_trampoline), EPatchStatus::AlreadyCreated);
    EXPECT_EQ(static_cast<int>(EPatchStatus::AlreadyCreated), 3);
}

TEST_F(CPatchEngineTest, UnknownTargetsAreReported)
{
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::NotCreated);
    EXPECT_EQ(m_engine.Disable(m_returnsOne.Get()), EPatchStatus::NotCreated);
    EXPECT_EQ(static_cast<int>(EPatchStatus::NotCreated), 4);
}

TEST_F(CPatchEngineTest, PatchesCannotBeEnabledOrDisabledTwice)
{
    ASSERT_EQ(m_engine.Create(m_returnsOne.Get(), c_Detour, m_trampoline), EPatchStatus::Success);
    EXPECT_EQ(m_engine.Disable(m_returnsOne.Get()), EPatchStatus::AlreadyDisabled);
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::Success);
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::AlreadyEnabled);
    EXPECT_EQ(m_engine.Disable(m_returnsOne.Get()), EPatchStatus::Success);
    EXPECT_EQ(m_engine.Disable(m_returnsOne.Get()), EPatchStatus::AlreadyDisabled);
    EXPECT_EQ(static_cast<int>(EPatchStatus::AlreadyEnabled), 5);
    EXPECT_EQ(static_cast<int>(EPatchStatus::AlreadyDisabled), 6);
}

TEST_F(CPatchEngineTest, DataIsRefusedAsTargetAndAsDetour)
{
    int data = 0;
    EXPECT_EQ(m_engine.Create(&data, c_Detour, m_trampoline), EPatchStatus::NotExecutable);
    EXPECT_EQ(m_engine.Create(m_returnsOne.Get(), &data, m_trampoline), EPatchStatus::NotExecutable);
    EXPECT_EQ(m_engine.Create(nullptr, c_Detour, m_trampoline), EPatchStatus::NotExecutable);
    EXPECT_EQ(m_trampoline, nullptr);
    EXPECT_EQ(static_cast<int>(EPatchStatus::NotExecutable), 7);
}

namespace
{

/// Number of calls of ProtectPages that succeed before all fail.
int s_goodProtections = 0;

bool protectSeldom(void* address, std::size_t size, std::uint32_t protection) noexcept
{
    return s_goodProtections-- > 0 && LbOs::ProtectPages(address, size, protection);
}

/// Has two functions, and an engine for which ProtectPages fails after `s_goodProtections` calls. The engine stops
/// threads, so builds with sanitizers skip these tests, as they skip those of CPatchEngineTest.
class CPatchEngineProtection : public testing::Test
{
protected:
    void SetUp() override
    {
        if (LbOs::GetHeapFunctions().malloc == nullptr)
        {
            GTEST_SKIP() << "a sanitizer patches functions itself and delays signals";
        }
        m_engine.Initialize();
        ASSERT_EQ(m_engine.Create(m_returnsOne.Get(), c_Detour, m_first), EPatchStatus::Success);
        ASSERT_EQ(m_engine.Create(m_returnsTwo.Get(), c_Detour, m_second), EPatchStatus::Success);
    }
    ~CPatchEngineProtection() override
    {
        s_goodProtections = 100;
        m_engine.ShutDown();
    }

    CPatchEngine m_engine{{.protect = protectSeldom}};
    const CodePages m_returnsOne{0xB8, 1, 0, 0, 0, 0xC3};
    const CodePages m_returnsTwo{0xB8, 2, 0, 0, 0, 0xC3};
    void* m_first = nullptr;
    void* m_second = nullptr;
};

} // namespace

TEST_F(CPatchEngineProtection, PagesThatRemainReadOnlyAreNotPatched)
{
    s_goodProtections = 0;
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::NotProtectable);
    EXPECT_EQ(m_returnsOne.Call(), 1);
    EXPECT_EQ(m_engine.Disable(m_returnsOne.Get()), EPatchStatus::AlreadyDisabled);
    EXPECT_EQ(static_cast<int>(EPatchStatus::NotProtectable), 10);
}

TEST_F(CPatchEngineProtection, PatchIsUndoneWhenTheProtectionCannotBeRestored)
{
    s_goodProtections = 1;
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::NotProtectable);
    EXPECT_EQ(m_returnsOne.Call(), 1);
    s_goodProtections = 2;
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::Success);
    s_goodProtections = 1;
    EXPECT_EQ(m_engine.Disable(m_returnsOne.Get()), EPatchStatus::NotProtectable);
    EXPECT_EQ(m_returnsOne.Call(), c_Detoured);
}

TEST_F(CPatchEngineProtection, EnableAllEnablesAllPatchesOrNone)
{
    // Changing the protection works twice for the first patch, fails for the second, and works twice again to undo the
    // first.
    static int s_call = 0;
    s_call = 0;
    CPatchEngine engine({.protect = [](void* address, std::size_t size, std::uint32_t protection) noexcept {
        return ++s_call != 3 && LbOs::ProtectPages(address, size, protection);
    }});
    engine.Initialize();
    ASSERT_EQ(engine.Create(m_returnsOne.Get(), c_Detour, m_first), EPatchStatus::Success);
    ASSERT_EQ(engine.Create(m_returnsTwo.Get(), c_Detour, m_second), EPatchStatus::Success);
    EXPECT_EQ(engine.EnableAll(), EPatchStatus::NotProtectable);
    EXPECT_EQ(m_returnsOne.Call(), 1);
    EXPECT_EQ(m_returnsTwo.Call(), 2);
    EXPECT_EQ(engine.EnableAll(), EPatchStatus::Success) << "the second attempt succeeds";
    EXPECT_EQ(m_returnsOne.Call(), c_Detoured);
    EXPECT_EQ(m_returnsTwo.Call(), c_Detoured);
    EXPECT_EQ(engine.ShutDown(), EPatchStatus::Success);
}

TEST_F(CPatchEngineProtection, ShutDownThatFailsMidwayCanBeRepeated)
{
    s_goodProtections = 4;
    ASSERT_EQ(m_engine.EnableAll(), EPatchStatus::Success);
    s_goodProtections = 2;
    EXPECT_EQ(m_engine.ShutDown(), EPatchStatus::NotProtectable);
    EXPECT_EQ(CodePages::Call(m_first), 1) << "the trampolines still work";
    EXPECT_EQ(CodePages::Call(m_second), 2);
    s_goodProtections = 4;
    EXPECT_EQ(m_engine.EnableAll(), EPatchStatus::Success);
    EXPECT_EQ(m_returnsOne.Call() + m_returnsTwo.Call(), 2 * c_Detoured);
    s_goodProtections = 4;
    EXPECT_EQ(m_engine.ShutDown(), EPatchStatus::Success);
    EXPECT_EQ(m_returnsOne.Call() + m_returnsTwo.Call(), 3);
}

TEST_F(CPatchEngineProtection, PagesGetBackTheProtectionThatTheyHadBeforeThePatch)
{
    s_goodProtections = 4;
    ASSERT_TRUE(LbOs::ProtectPages(m_returnsOne.Get(), 1, LbOs::c_ProtectionReadExecute));
    EXPECT_EQ(m_engine.Enable(m_returnsOne.Get()), EPatchStatus::Success);
    LbOs::SRegion region;
    ASSERT_TRUE(LbOs::QueryRegion(reinterpret_cast<std::uintptr_t>(m_returnsOne.Get()), region));
    EXPECT_EQ(region.protection, LbOs::c_ProtectionReadExecute);
}

TEST(CPatchEngineMemory, PatchFailsWithoutMemoryInReach)
{
    CPatchEngine engine({.allocateNear = [](std::uintptr_t, std::size_t) noexcept -> void* { return nullptr; }});
    const CodePages code{0xB8, 1, 0, 0, 0, 0xC3};
    void* trampoline = nullptr;
    engine.Initialize();
    EXPECT_EQ(engine.Create(code.Get(), c_Detour, trampoline), EPatchStatus::NoMemory);
    EXPECT_EQ(engine.Enable(code.Get()), EPatchStatus::NotCreated);
    EXPECT_EQ(trampoline, nullptr);
    EXPECT_EQ(engine.ShutDown(), EPatchStatus::Success);
    EXPECT_EQ(static_cast<int>(EPatchStatus::NoMemory), 9);
}

TEST_F(CPatchEngineTest, DistantDetourIsReachedByARelay)
{
    const auto target = reinterpret_cast<std::uintptr_t>(m_returnsOne.Get());
    const auto detourAddress = reinterpret_cast<std::uintptr_t>(c_Detour);
    const std::uintptr_t distance = target > detourAddress ? target - detourAddress : detourAddress - target;
    ASSERT_GT(distance, std::uintptr_t{1} << 31U);
    ASSERT_EQ(patch(m_returnsOne.Get()), EPatchStatus::Success);
    std::int32_t displacement = 0;
    std::memcpy(&displacement, m_returnsOne.GetBytes() + 1, sizeof(displacement));
    const auto* const block = static_cast<const std::uint8_t*>(m_trampoline) - STrampoline::sc_uiEntry;
    EXPECT_EQ(m_returnsOne.GetBytes() + LuTestSuite::c_PatchSize + displacement, block + STrampoline::sc_uiRelay);
    EXPECT_EQ(m_returnsOne.Call(), c_Detoured);
    EXPECT_EQ(CodePages::Call(m_trampoline), 1);
}

TEST_F(CPatchEngineTest, NearDetourIsReachedDirectly)
{
    const CodePages code{0xB8, 1, 0, 0, 0, 0xC3, 0xCC, 0xCC, 0xB8, 2, 0, 0, 0, 0xC3};
    ASSERT_EQ(m_engine.Create(code.Get(), code.GetBytes() + 8, m_trampoline), EPatchStatus::Success);
    ASSERT_EQ(m_engine.Enable(code.Get()), EPatchStatus::Success);
    EXPECT_EQ(code.GetBytes()[0], 0xE9);
    EXPECT_EQ(code.GetBytes()[1], 3) << "detour - target - 5";
    EXPECT_EQ(code.Call(), 2);
}

TEST_F(CPatchEngineTest, EnableAllSkipsEnabledPatches)
{
    const CodePages other{0xB8, 2, 0, 0, 0, 0xC3};
    void* otherTrampoline = nullptr;
    ASSERT_EQ(patch(m_returnsOne.Get()), EPatchStatus::Success);
    ASSERT_EQ(m_engine.Create(other.Get(), c_Detour, otherTrampoline), EPatchStatus::Success);
    EXPECT_EQ(m_engine.EnableAll(), EPatchStatus::Success);
    EXPECT_EQ(m_returnsOne.Call() + other.Call(), 2 * c_Detoured);
    EXPECT_EQ(CodePages::Call(m_trampoline), 1);
    EXPECT_EQ(CodePages::Call(otherTrampoline), 2);
}

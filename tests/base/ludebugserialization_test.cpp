#include "base/ludebugserialization.h"

#include <thread>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// Restores the process-wide directory.
class LuDebugSerializationGenericTest : public testing::Test
{
protected:
    ~LuDebugSerializationGenericTest() override { LuDebugSerializationGeneric::SetDefaultOutputDirectory(m_former); }

private:
    std::wstring m_former = LuDebugSerializationGeneric::GetDefaultOutputDirectory();
};

TEST_F(LuDebugSerializationGenericTest, ReturnsTheDirectoryThatWasSet)
{
    LuDebugSerializationGeneric::SetDefaultOutputDirectory(L"first");
    LuDebugSerializationGeneric::SetDefaultOutputDirectory(L"größer");
    EXPECT_EQ(LuDebugSerializationGeneric::GetDefaultOutputDirectory(), L"größer");
}

TEST_F(LuDebugSerializationGenericTest, AcceptsAnEmptyDirectory)
{
    LuDebugSerializationGeneric::SetDefaultOutputDirectory(L"directory");
    LuDebugSerializationGeneric::SetDefaultOutputDirectory(L"");
    EXPECT_EQ(LuDebugSerializationGeneric::GetDefaultOutputDirectory(), L"");
}

TEST_F(LuDebugSerializationGenericTest, KeepsAThreadsDirectoryUntilTheEndOfItsScope)
{
    const auto get = [] { return LuDebugSerializationGeneric::GetDefaultOutputDirectory(); };
    LuDebugSerializationGeneric::SetDefaultOutputDirectory(L"process");
    {
        const LuDebugSerializationGeneric::CThreadDirectory outer(L"thread");
        {
            const LuDebugSerializationGeneric::CThreadDirectory inner(L"case");
            EXPECT_EQ(get(), L"case");
            std::thread([&get] { EXPECT_EQ(get(), L"process"); }).join();
        }
        EXPECT_EQ(get(), L"thread");
    }
    EXPECT_EQ(get(), L"process");
}

TEST_F(LuDebugSerializationGenericTest, DoesNotCreateTheDirectory)
{
    const ScopedFolder folder;
    LuDebugSerializationGeneric::SetDefaultOutputDirectory(folder.GetPathOf(L"debug"));
    EXPECT_FALSE(LbFileSystem::Exists(folder.GetPathOf(L"debug")));
}

} // namespace

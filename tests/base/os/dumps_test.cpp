#include "base/os/dumps.h"

#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "tests/support/probe.h"
#include "tests/support/scopedfolder.h"

namespace
{

using std::chrono::milliseconds;

class OsDumps : public testing::Test
{
protected:
    void SetUp() override
    {
        m_child = StartProbe(L"answer " + m_line.GetName());
        ASSERT_NE(m_child, nullptr);
        ASSERT_TRUE(m_line.IsAlive());
    }

    LbOs::SDump WriteDump(milliseconds longest) const
    {
        return LbOs::WriteDump(*m_child, std::nullopt, m_folder.GetPathOf(L"abbild"), longest);
    }

    /// Waits until the folder has no files; false after a minute.
    bool WaitForNoFile() const
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (!LbFileSystem::GetFileNames(m_folder.GetPath()).empty())
        {
            if (std::chrono::steady_clock::now() > end)
            {
                return false;
            }
            std::this_thread::sleep_for(milliseconds(10));
        }
        return true;
    }

    const ScopedFolder m_folder;
    CProbeLine m_line;
    std::unique_ptr<LbOs::CChildProcess> m_child;
};

TEST_F(OsDumps, AreWrittenWhileTheProcessKeepsRunning)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the process has terabytes of shadow memory";
#endif
    const LbOs::SDump dump = WriteDump(std::chrono::minutes(1));

    EXPECT_EQ(dump.failure, L"");
    const bool isWindows = LbPath::c_Separator == L'\\';
    EXPECT_EQ(dump.path, m_folder.GetPathOf(isWindows ? L"abbild.dmp" : L"abbild.core"));
    EXPECT_TRUE(LbFileSystem::ReadFile8Bit(dump.path).starts_with(isWindows ? "MDMP" : "\177ELF"));
    EXPECT_TRUE(m_line.IsAlive());
}

TEST_F(OsDumps, LeaveNoFileAtTheTimeLimit)
{
    const LbOs::SDump dump = WriteDump(milliseconds(0));

    EXPECT_EQ(dump.path, L"");
    EXPECT_NE(dump.failure, L"");
    EXPECT_TRUE(WaitForNoFile());
    // The threads run again.
    EXPECT_TRUE(m_line.IsAlive());
}

/// The time limit of a case ends its process while the dump is still being written.
TEST_F(OsDumps, LeaveNoFileIfTheProcessEndsWhileTheyAreWritten)
{
    WriteDump(milliseconds(0));
    m_child->Terminate();

    EXPECT_TRUE(WaitForNoFile());
}

} // namespace

#include "base/os/linux/usertasks.h"

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "tests/support/scopedfolder.h"

namespace
{

TEST(OsUserTasks, AreTheThreadsOfTheUsersProcesses)
{
    const ScopedFolder folder;
    for (const wchar_t* const task : {L"7/task/7", L"7/task/8", L"7/task/9", L"20/task/20", L"net"})
    {
        folder.MakeFolder(task);
    }
    const std::string root = LbEncoding::ToNative(folder.GetPath());

    EXPECT_EQ(LbOs::Linux::CountUserTasks(root), 4U);
    EXPECT_EQ(LbOs::Linux::CountUserTasks(root + "missing"), 0U);
}

TEST(OsUserTasks, AreCountedInProc)
{
    EXPECT_GE(LbOs::Linux::CountUserTasks("/proc"), 1U);
}

} // namespace

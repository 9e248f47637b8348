#include "base/os/folderlock.h"

#include <atomic>
#include <optional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "tests/support/os/testaids.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LbOs::CFolderLock;

TEST(OsFolderLockConcurrency, AdmitsOneThreadAtATime)
{
    constexpr int c_Rounds = 200;
    const ScopedFolder folder;
    std::atomic<int> count = 0;
    const auto work = [&folder, &count](const std::wstring& path) {
        for (int round = 0; round < c_Rounds; ++round)
        {
            const auto lock = CFolderLock::Acquire(path);
            ASSERT_NE(lock, nullptr);
            // Increments in two steps, so that some increments would be lost without the lock.
            const int before = count;
            std::this_thread::yield();
            count = before + 1;
        }
    };
    {
        // The threads use two spellings of one folder's path.
        std::jthread first(work, folder.GetPath());
        std::jthread second(work, LbPath::WithoutSeparator(folder.GetPath()));
    }

    EXPECT_EQ(count, 2 * c_Rounds);
}

TEST(OsFolderLock, IsReleasedByItsDestructor)
{
    const ScopedFolder folder;
    const auto lockInThread = [&folder] {
        bool isLocked = false;
        std::thread([&] { isLocked = CFolderLock::Acquire(folder.GetPath()) != nullptr; }).join();
        return isLocked;
    };

    EXPECT_TRUE(lockInThread());
    EXPECT_TRUE(lockInThread());
}

TEST(OsFolderLock, IsReleasedWhenItsHolderDies)
{
    const ScopedFolder folder;
    const std::optional<int> status = LbOs::RunInFork([&folder] {
        // The process exits without releasing the lock.
        return CFolderLock::Acquire(folder.GetPath()).release() != nullptr ? 0 : 1;
    });
    if (!status)
    {
        GTEST_SKIP() << "processes do not fork here";
    }

    EXPECT_EQ(status, 0);
    EXPECT_NE(CFolderLock::Acquire(folder.GetPath()), nullptr);
}

TEST(OsFolderLock, DoesNotLockSubfolders)
{
    const ScopedFolder folder;
    const std::wstring inner = folder.MakeFolder(L"innen");
    const auto outerLock = CFolderLock::Acquire(folder.GetPath());
    bool isLocked = false;
    std::thread([&] { isLocked = CFolderLock::Acquire(inner) != nullptr; }).join();

    EXPECT_NE(outerLock, nullptr);
    EXPECT_TRUE(isLocked);
}

TEST(OsFolderLock, AddsNoFileAndDoesNotPreventWriting)
{
    const ScopedFolder folder;
    const auto lock = CFolderLock::Acquire(folder.GetPath());
    folder.WriteFile(L"Datei", "x");

    EXPECT_EQ(LbFileSystem::GetFileNames(folder.GetPath()), std::vector<std::wstring>{L"Datei"});
}

TEST(OsFolderLock, IsRefusedAtOnceWhileAnotherThreadHoldsIt)
{
    const ScopedFolder folder;
    const auto tryInThread = [&folder] {
        bool isLocked = false;
        std::thread([&] { isLocked = CFolderLock::TryAcquire(folder.GetPath()) != nullptr; }).join();
        return isLocked;
    };
    {
        const auto lock = CFolderLock::Acquire(folder.GetPath());
        EXPECT_FALSE(tryInThread());
    }

    EXPECT_TRUE(tryInThread());
}

TEST(OsFolderLock, ReportsWhetherAnotherThreadHoldsIt)
{
    const ScopedFolder folder;
    const auto isHeldElsewhere = [](const std::wstring& path) {
        bool isHeld = true;
        std::thread([&] { CFolderLock::TryAcquire(path, isHeld); }).join();
        return isHeld;
    };
    {
        const auto lock = CFolderLock::Acquire(folder.GetPath());
        EXPECT_TRUE(isHeldElsewhere(folder.GetPath()));
    }

    EXPECT_FALSE(isHeldElsewhere(folder.GetPath()));
    EXPECT_FALSE(isHeldElsewhere(folder.GetPathOf(L"fehlt")));
}

TEST(OsFolderLock, IsRefusedAtOnceToTheThreadThatHoldsIt)
{
    const ScopedFolder folder;
    const auto lock = CFolderLock::Acquire(folder.GetPath());
    bool isHeld = false;

    EXPECT_EQ(CFolderLock::TryAcquire(folder.GetPath(), isHeld), nullptr);
    EXPECT_TRUE(isHeld);
}

TEST(OsFolderLock, CannotBeAcquiredForAMissingFolder)
{
    const ScopedFolder folder;

    EXPECT_EQ(CFolderLock::Acquire(folder.GetPathOf(L"fehlt")), nullptr);
    EXPECT_EQ(CFolderLock::TryAcquire(folder.GetPathOf(L"fehlt")), nullptr);
}

} // namespace

#include "base/os/durablefiles.h"

#include <string_view>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "tests/support/scopedfolder.h"

namespace
{

bool append(LbOs::FileHandle file, std::string_view bytes)
{
    return LbOs::WriteFileBytes(file, bytes.data(), bytes.size());
}

TEST(OsDurableFiles, GrowByTheAppendedBytes)
{
    const ScopedFolder folder;
    const std::wstring path = folder.GetPathOf(L"Prüfung");
    const LbOs::FileHandle file = LbOs::CreateForAppending(path);
    ASSERT_NE(file, LbOs::c_InvalidFile);

    EXPECT_TRUE(append(file, "eins"));
    EXPECT_TRUE(LbOs::SynchroniseFile(file));
    // Other programs may read the file while it is open.
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(path), "eins");
    EXPECT_TRUE(append(file, "zwei"));
    EXPECT_TRUE(LbOs::CloseFile(file));
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(path), "einszwei");
}

TEST(OsDurableFiles, AreNeverCreatedOverExistingFiles)
{
    const ScopedFolder folder;
    const std::wstring path = folder.WriteFile(L"da", "x");

    EXPECT_EQ(LbOs::CreateForAppending(path), LbOs::c_InvalidFile);
    EXPECT_EQ(LbOs::CreateForAppending(folder.GetPathOf(L"fehlt/neu")), LbOs::c_InvalidFile);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(path), "x");
}

TEST(OsDurableFiles, SynchroniseTheirDirectory)
{
    const ScopedFolder folder;

    EXPECT_TRUE(LbOs::SynchroniseDirectory(folder.GetPath()));
    EXPECT_FALSE(LbOs::SynchroniseDirectory(folder.GetPathOf(L"fehlt")));
}

TEST(OsDurableFiles, ReportThatTheyCannotBeSynchronised)
{
    EXPECT_FALSE(LbOs::SynchroniseFile(LbOs::c_InvalidFile));
}

} // namespace

#include "base/os/filereplacement.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "tests/support/os/testaids.h"
#include "tests/support/scopedfolder.h"

namespace
{

using std::filesystem::perms;

constexpr perms c_Readable = perms::owner_read | perms::group_read | perms::others_read;

perms getPermissions(const std::wstring& path)
{
    return std::filesystem::status(std::filesystem::path(path)).permissions();
}

TEST(OsFileReplacement, ReplacesAFile)
{
    const ScopedFolder folder;
    const std::wstring from = folder.WriteFile(L"Prüfung.tmp", "new");
    const std::wstring to = folder.WriteFile(L"Prüfung", "old");

    EXPECT_TRUE(LbOs::RenameFile(from, to));

    EXPECT_EQ(LbFileSystem::GetFileNames(folder.GetPath()), std::vector<std::wstring>{L"Prüfung"});
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(to), "new");
}

TEST(OsFileReplacement, KeepsAFileThatCannotBeRenamed)
{
    const ScopedFolder folder;
    const std::wstring from = folder.WriteFile(L"file", "new");
    folder.MakeFolder(L"directory");

    EXPECT_FALSE(LbOs::RenameFile(from, folder.GetPathOf(L"directory")));
    EXPECT_FALSE(LbOs::RenameFile(from, folder.GetPathOf(L"missing/file")));
    EXPECT_FALSE(LbOs::RenameFile(folder.GetPathOf(L"missing"), from));
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(from), "new");
}

TEST(OsFileReplacement, KeepsThePermissionsOfTheReplacedFile)
{
    if (LbPath::c_Separator == L'\\')
    {
        GTEST_SKIP() << "files inherit the permissions of their folder here";
    }
    const ScopedFolder folder;
    const std::wstring from = folder.WriteFile(L"new", "new");
    const std::wstring to = folder.WriteFile(L"old", "old");
    constexpr perms c_Unusual = perms::owner_all | perms::group_read | perms::others_exec;
    std::filesystem::permissions(std::filesystem::path(to), c_Unusual);

    ASSERT_TRUE(LbOs::RenameFile(from, to));

    EXPECT_EQ(getPermissions(to), c_Unusual);
}

TEST(OsFileReplacement, DoesNotReplaceAReadOnlyFile)
{
    const ScopedFolder folder;
    const std::wstring from = folder.WriteFile(L"new", "new");
    const std::wstring to = folder.WriteFile(L"old", "old");
    std::filesystem::permissions(std::filesystem::path(to), c_Readable);
    const auto rename = [&] { return LbOs::RenameFile(from, to) ? 1 : 0; };
    // Drops administrator rights, because permissions do not restrict an administrator.
    const std::optional<int> result = LbOs::RunInFork([&] { return LbOs::GiveUpRights() ? rename() : 2; });

    EXPECT_EQ(result ? *result : rename(), 0);

    EXPECT_EQ(LbFileSystem::ReadFile8Bit(to), "old");
    std::filesystem::permissions(std::filesystem::path(to), perms::owner_write, std::filesystem::perm_options::add);
}

TEST(OsFileReplacement, RecognisesFoldersThatAcceptFiles)
{
    const ScopedFolder folder;

    EXPECT_TRUE(LbOs::MayAddFiles(folder.GetPath()));
    EXPECT_TRUE(LbOs::MayAddFiles(L"."));
    EXPECT_FALSE(LbOs::MayAddFiles(folder.GetPathOf(L"missing")));
}

} // namespace

// File identity and file status.

#include "base/os/files.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "tests/support/apart.h"
#include "tests/support/os/testaids.h"
#include "tests/support/scopedfolder.h"

namespace
{

TEST(OsFiles, RecognisesAFileByDifferentPaths)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"Ordner/größer.txt", "x");
    const std::wstring equal = folder.WriteFile(L"gleich.txt", "x");

    EXPECT_TRUE(LbOs::AreSameFile(file, file));
    EXPECT_TRUE(LbOs::AreSameFile(file, folder.GetPathOf(L"Ordner/../Ordner/größer.txt")));
    EXPECT_FALSE(LbOs::AreSameFile(file, equal));
    EXPECT_TRUE(LbOs::AreSameFile(folder.GetPath(), folder.GetPathOf(L"Ordner/..")));
    EXPECT_FALSE(LbOs::AreSameFile(folder.GetPath(), folder.GetPathOf(L"Ordner")));
}

TEST(OsFiles, RecognisesAFileByItsHardLink)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"Datei", "x");
    const std::wstring hardLink = folder.GetPathOf(L"Ordner/anders.txt");
    folder.MakeFolder(L"Ordner");
    std::error_code error;
    std::filesystem::create_hard_link(LbEncoding::ToNative(file), LbEncoding::ToNative(hardLink), error);
    ASSERT_FALSE(error) << error.message();

    EXPECT_TRUE(LbOs::AreSameFile(file, hardLink));
    EXPECT_TRUE(LbOs::AreSameFile(hardLink, file));
}

TEST(OsFiles, ReportsTheStatusOfAFile)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"Datei", "x");
    const std::optional<LbOs::SFileStatus> before = LbOs::GetFileStatus(file);
    ASSERT_TRUE(before);
    EXPECT_EQ(before->size, 1);
    EXPECT_FALSE(before->hasSeveralNames);

    folder.WriteFile(L"Datei", "xyz");
    const std::filesystem::path path(file);
    std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) - std::chrono::seconds(2));
    std::filesystem::create_hard_link(path, std::filesystem::path(folder.GetPathOf(L"auch")));

    const std::optional<LbOs::SFileStatus> after = LbOs::GetFileStatus(file);
    ASSERT_TRUE(after);
    EXPECT_EQ(after->identity, before->identity);
    EXPECT_EQ(after->size, 3);
    EXPECT_LT(after->modificationTime, before->modificationTime);
    EXPECT_TRUE(after->hasSeveralNames);
    EXPECT_NE(LbOs::GetFileStatus(folder.WriteFile(L"andere", "xyz"))->identity, before->identity);
    EXPECT_FALSE(LbOs::GetFileStatus(folder.GetPathOf(L"fehlt")));
}

TEST(OsFiles, ReportsTheStatusOfALinkItself)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"Datei", "x");
    const std::wstring link = folder.GetPathOf(L"Verweis");
    if (!LbOs::MakeLink(link, L"Datei"))
    {
        GTEST_SKIP() << "links cannot be made here";
    }
    EXPECT_EQ(LbOs::GetFileStatus(link)->identity, LbOs::GetFileStatus(file)->identity);
    EXPECT_EQ(LbOs::GetPlaceStatus(file)->identity, LbOs::GetFileStatus(file)->identity);
    EXPECT_NE(LbOs::GetPlaceStatus(link)->identity, LbOs::GetFileStatus(file)->identity);
}

TEST(OsFiles, DistinguishesMissingFromExistingPaths)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"Datei", "x");
    EXPECT_FALSE(LbOs::IsMissing(file));
    EXPECT_FALSE(LbOs::IsMissing(folder.GetPath()));
    for (const wchar_t* const missing : {L"fehlt", L"fehlt/auch", L"Datei/auch"})
    {
        EXPECT_TRUE(LbOs::IsMissing(folder.GetPathOf(missing))) << LbEncoding::ToUtf8(missing);
    }
}

TEST(OsFiles, TreatsACircleOfLinksAsMissing)
{
    const ScopedFolder folder;
    const std::wstring link = folder.GetPathOf(L"Kreis");
    if (!LbOs::MakeLink(link, L"Kreis"))
    {
        GTEST_SKIP() << "links cannot be made here";
    }
    EXPECT_TRUE(LbOs::IsMissing(link));
}

TEST(OsFiles, DoesNotTreatFilesInAnUnreadableFolderAsMissing)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"zu/Datei", "x");
    const std::filesystem::path closed(folder.GetPathOf(L"zu"));
    std::filesystem::permissions(closed, std::filesystem::perms::none);
    const bool isChecked = CheckApart(LbOs::GiveUpRights, [&] {
        EXPECT_EQ(LbOs::QueryEntry(file), LbOs::EEntry::Missing);
        EXPECT_FALSE(LbOs::GetFileStatus(file));
        EXPECT_FALSE(LbOs::IsMissing(file));
    });
    std::filesystem::permissions(closed, std::filesystem::perms::owner_all);
    if (!isChecked)
    {
        GTEST_SKIP() << "a process cannot drop its rights here";
    }
}

TEST(OsFiles, RecognisesAFileThroughALink)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"Datei", "x");
    const std::wstring link = folder.GetPathOf(L"Verweis");
    std::error_code error;
    std::filesystem::create_symlink(LbEncoding::ToNative(file), LbEncoding::ToNative(link), error);
    if (error)
    {
        GTEST_SKIP() << "links cannot be made here: " << error.message();
    }
    EXPECT_TRUE(LbOs::AreSameFile(file, link));
}

TEST(OsFiles, DoesNotTreatMissingFilesAsTheSameFile)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"Datei", "x");
    const std::wstring missing = folder.GetPathOf(L"fehlt");

    for (const std::wstring& other : {missing, std::wstring(), file + std::wstring(1, L'\0')})
    {
        EXPECT_FALSE(LbOs::AreSameFile(file, other));
        EXPECT_FALSE(LbOs::AreSameFile(other, file));
        EXPECT_FALSE(LbOs::AreSameFile(other, other));
    }
}

} // namespace

#include "base/os/files.h"

#include <array>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "tests/support/os/testaids.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/scopedworkingdirectory.h"

namespace
{

using Entries = std::map<std::wstring, bool>;

/// The names in a directory, each with a flag that is true for directories.
Entries list(const std::wstring& directory)
{
    Entries entries;
    EXPECT_TRUE(LbOs::VisitDirectory(
        directory, [&entries](const LbOs::SDirectoryEntry& entry) { entries[entry.name] = entry.isDirectory; }));
    return entries;
}

TEST(OsFiles, VisitsFilesAndDirectories)
{
    const ScopedFolder folder;
    folder.WriteFile(L"file.txt", "x");
    folder.WriteFile(L"größer €.txt", "x");
    folder.WriteFile(L"folder/inner.txt", "x");
    EXPECT_EQ(list(folder.GetPath()), (Entries{{L"file.txt", false}, {L"größer €.txt", false}, {L"folder", true}}));
    EXPECT_EQ(list(LbPath::WithoutSeparator(folder.GetPath())).size(), 3U);
}

TEST(OsFiles, VisitsEachOfManyEntriesOnce)
{
    const ScopedFolder folder;
    Entries expected;
    for (int index = 0; index < 1500; ++index)
    {
        const std::wstring name = L"file number " + std::to_wstring(index);
        folder.WriteFile(name, "");
        expected[name] = false;
    }
    int visits = 0;
    LbOs::VisitDirectory(folder.GetPath(), [&visits](const LbOs::SDirectoryEntry&) { ++visits; });
    EXPECT_EQ(visits, 1500);
    EXPECT_EQ(list(folder.GetPath()), expected);
}

TEST(OsFiles, VisitsNothingInAnEmptyDirectory)
{
    const ScopedFolder folder;
    EXPECT_EQ(list(folder.GetPath()), Entries());
}

TEST(OsFiles, RefusesToVisitAFile)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"file", "x");
    const auto ignore = [](const LbOs::SDirectoryEntry&) {};
    EXPECT_FALSE(LbOs::VisitDirectory(file, ignore));
    EXPECT_FALSE(LbOs::VisitDirectory(folder.GetPathOf(L"missing"), ignore));
    EXPECT_FALSE(LbOs::VisitDirectory(L"", ignore));
}

TEST(OsFiles, PassesOnExceptionsOfTheVisitor)
{
    const ScopedFolder folder;
    folder.WriteFile(L"file", "x");
    const auto fail = [](const LbOs::SDirectoryEntry&) { throw std::runtime_error("visit"); };
    EXPECT_THROW(LbOs::VisitDirectory(folder.GetPath(), fail), std::runtime_error);
    EXPECT_EQ(list(folder.GetPath()).size(), 1U);
}

TEST(OsFiles, FollowsLinksToDirectories)
{
    const ScopedFolder folder;
    folder.WriteFile(L"target/file", "x");
    if (!LbOs::MakeLink(folder.GetPathOf(L"link"), folder.GetPathOf(L"target")) ||
        !LbOs::MakeLink(folder.GetPathOf(L"broken"), folder.GetPathOf(L"missing")))
    {
        GTEST_SKIP() << "links cannot be made here";
    }
    EXPECT_EQ(list(folder.GetPath()), (Entries{{L"broken", false}, {L"link", true}, {L"target", true}}));
    EXPECT_EQ(LbOs::QueryEntry(folder.GetPathOf(L"link")), LbOs::EEntry::Directory);
    EXPECT_TRUE(LbOs::RemoveFile(folder.GetPathOf(L"link")));
    EXPECT_EQ(LbOs::QueryEntry(folder.GetPathOf(L"target/file")), LbOs::EEntry::File);
}

TEST(OsFiles, FullPathKeepsTheNamesOfLinks)
{
    const ScopedFolder folder;
    folder.WriteFile(L"target/inner/file", "x");
    folder.MakeFolder(L"a..b");
    std::error_code error;
    std::filesystem::create_directory_symlink(folder.GetPathOf(L"target"), folder.GetPathOf(L"a..b/link"), error);
    if (error)
    {
        GTEST_SKIP() << "links cannot be made here: " << error.message();
    }
    const std::wstring link = folder.GetPathOf(LbPath::ToNative(L"a..b/link"));

    EXPECT_EQ(LbOs::GetFullPath(link), link);
    EXPECT_EQ(LbOs::GetFullPath(folder.GetPathOf(LbPath::ToNative(L"target/../a..b/./link"))), link);
    EXPECT_EQ(LbOs::GetFullPath(folder.GetPathOf(LbPath::ToNative(L"fehlt/../a..b/link"))), link);
    EXPECT_EQ(LbOs::GetFullPath(link + LbPath::ToNative(L"/inner/./../inner")), link + LbPath::ToNative(L"/inner"));
    EXPECT_EQ(LbOs::GetFullPath(link + LbPath::ToNative(L"/inner/")), link + LbPath::ToNative(L"/inner/"));
}

TEST(OsFiles, FullPathResolvesParentsLikeTheSystem)
{
    if (LbPath::c_Separator == L'\\')
    {
        GTEST_SKIP() << "the system resolves \"..\" in the text of a path here";
    }
    const ScopedFolder folder;
    folder.WriteFile(L"target/inner/file", "x");
    std::filesystem::create_directory_symlink(folder.GetPathOf(L"target/inner"), folder.GetPathOf(L"link"));

    EXPECT_EQ(LbOs::GetFullPath(folder.GetPathOf(L"link/../inner")), folder.GetPathOf(L"target/inner"));
    EXPECT_EQ(LbOs::GetFullPath(L"/../.."), L"/");
}

TEST(OsFiles, FullPathOfARelativePathNeedsAWorkingDirectory)
{
    const ScopedFolder folder;
    const std::wstring gone = LbPath::WithoutSeparator(folder.MakeFolder(L"weg"));
    const ScopedWorkingDirectory place(gone);
    if (!LbOs::RemoveEmptyDirectory(gone))
    {
        GTEST_SKIP() << "working directories cannot be removed here";
    }
    EXPECT_EQ(LbOs::GetWorkingDirectory(), L"");
    EXPECT_THROW(LbOs::GetFullPath(L"."), LbException);
    EXPECT_THROW(LbOs::GetFullPath(L"a/b"), LbException);
    EXPECT_EQ(LbOs::GetFullPath(L""), L"");
    EXPECT_EQ(LbOs::GetFullPath(L"/a/./b"), L"/a/b");
}

TEST(OsFiles, DistinguishesLinksFromTheirTargets)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"Ordner/Datei", "x");
    const std::wstring link = folder.GetPathOf(L"Ordner/Verweis");
    const std::wstring dangling = folder.GetPathOf(L"ins Leere");
    const std::wstring directory = folder.GetPathOf(L"Abkürzung");
    if (!LbOs::MakeLink(link, L"Datei") || !LbOs::MakeLink(dangling, folder.GetPathOf(L"fehlt")) ||
        !LbOs::MakeLink(directory, L"Ordner"))
    {
        GTEST_SKIP() << "links cannot be made here";
    }
    EXPECT_TRUE(LbOs::IsLink(link) && LbOs::IsLink(dangling) && LbOs::IsLink(directory));
    EXPECT_EQ(LbOs::QueryEntry(link), LbOs::EEntry::File);
    EXPECT_EQ(LbOs::QueryEntry(dangling), LbOs::EEntry::Missing);
    EXPECT_EQ(LbOs::QueryEntry(directory), LbOs::EEntry::Directory);

    const std::wstring place = LbOs::GetCanonicalPlace(directory + LbPath::ToNative(L"/Verweis"));
    EXPECT_EQ(place, LbOs::GetCanonicalPlace(link));
    EXPECT_EQ(LbPath::GetLastComponent(place), L"Verweis");
    EXPECT_EQ(LbPath::GetLastComponent(LbOs::GetCanonicalPath(link)), L"Datei");
    EXPECT_TRUE(LbOs::AreSameFile(LbOs::GetLinkTarget(place), file));
    EXPECT_EQ(LbPath::GetLastComponent(LbOs::GetLinkTarget(dangling)), L"fehlt");
    EXPECT_EQ(LbPath::GetLastComponent(LbOs::GetLinkTarget(directory)), L"Ordner");
}

TEST(OsFiles, DoesNotTreatFilesAndFoldersAsLinks)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"Ordner/Datei", "x");
    for (const std::wstring& path : {file, folder.GetPathOf(L"Ordner"), folder.GetPathOf(L"fehlt"), std::wstring()})
    {
        EXPECT_FALSE(LbOs::IsLink(path));
        EXPECT_EQ(LbOs::GetLinkTarget(path), L"");
        EXPECT_EQ(LbOs::GetCanonicalPlace(path), LbOs::GetCanonicalPath(path));
    }
    EXPECT_EQ(LbPath::GetLastComponent(LbOs::GetCanonicalPlace(file)), L"Datei");
    EXPECT_EQ(LbOs::GetCanonicalPlace(folder.GetPathOf(L"fehlt")), L"");
    EXPECT_EQ(LbOs::GetCanonicalPlace(folder.GetPathOf(L"Ordner/../Ordner/Datei")), LbOs::GetCanonicalPlace(file));
}

TEST(OsFiles, KeepsNamesThatAreInvalidText)
{
    const ScopedFolder folder;
    const std::wstring name = std::wstring(L"stray") + static_cast<wchar_t>(0xDCFF) + L".txt";
    const std::wstring path = folder.GetPath() + name;
    const LbOs::FileHandle file = LbOs::OpenForWriting(path);
    if (file == LbOs::c_InvalidFile)
    {
        GTEST_SKIP() << "the file system accepts only valid text";
    }
    LbOs::CloseFile(file);
    EXPECT_EQ(list(folder.GetPath()), (Entries{{name, false}}));
    EXPECT_EQ(LbOs::QueryEntry(path), LbOs::EEntry::File);
    EXPECT_TRUE(LbOs::RemoveFile(path));
}

TEST(OsFiles, MakesDirectoriesOnlyInExistingParents)
{
    const ScopedFolder folder;
    EXPECT_TRUE(LbOs::MakeDirectory(folder.GetPathOf(L"new")));
    EXPECT_TRUE(LbOs::MakeDirectory(folder.GetPathOf(L"new")));
    EXPECT_FALSE(LbOs::MakeDirectory(folder.GetPathOf(L"missing/new")));
    EXPECT_FALSE(LbOs::MakeDirectory(folder.WriteFile(L"file", "x")));
}

TEST(OsFiles, RemovesFilesButNoDirectories)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"file", "x");
    EXPECT_TRUE(LbOs::RemoveFile(file));
    EXPECT_FALSE(LbOs::RemoveFile(file));
    EXPECT_FALSE(LbOs::RemoveFile(LbPath::WithoutSeparator(folder.MakeFolder(L"directory"))));
    EXPECT_EQ(LbOs::QueryEntry(file), LbOs::EEntry::Missing);
    EXPECT_EQ(LbOs::QueryEntry(folder.GetPathOf(L"directory")), LbOs::EEntry::Directory);
}

TEST(OsFiles, RemovesWriteProtectedFiles)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"file", "x");
    std::filesystem::permissions(file, std::filesystem::perms::owner_read);
    EXPECT_TRUE(LbOs::RemoveFile(file));
    EXPECT_EQ(LbOs::QueryEntry(file), LbOs::EEntry::Missing);
}

TEST(OsFiles, KeepsTheProtectionOfFilesThatItCannotRemove)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"file", "x");
    const LbOs::FileHandle opened = LbOs::OpenForWriting(file);
    std::filesystem::permissions(file, std::filesystem::perms::owner_read);
    const bool isRemoved = LbOs::RemoveFile(file);
    LbOs::CloseFile(opened);
    if (isRemoved)
    {
        GTEST_SKIP() << "open files can be removed here";
    }
    EXPECT_EQ(std::filesystem::status(file).permissions() & std::filesystem::perms::owner_write,
              std::filesystem::perms::none);
    EXPECT_TRUE(LbOs::RemoveFile(file));
}

TEST(OsFiles, RemovesEmptyDirectoriesOnly)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"full/file", "x");
    EXPECT_FALSE(LbOs::RemoveEmptyDirectory(folder.GetPathOf(L"full")));
    EXPECT_FALSE(LbOs::RemoveEmptyDirectory(file));
    EXPECT_FALSE(LbOs::RemoveEmptyDirectory(folder.GetPathOf(L"missing")));
    EXPECT_TRUE(LbOs::RemoveFile(file));
    EXPECT_TRUE(LbOs::RemoveEmptyDirectory(folder.GetPathOf(L"full")));
    EXPECT_EQ(LbOs::QueryEntry(folder.GetPathOf(L"full")), LbOs::EEntry::Missing);
}

TEST(OsFiles, ChangesTheWorkingDirectory)
{
    const ScopedFolder folder;
    folder.WriteFile(L"größer/here.txt", "x");
    const std::wstring former = LbOs::GetWorkingDirectory();
    ASSERT_TRUE(LbOs::SetWorkingDirectory(folder.GetPathOf(L"größer")));
    const std::wstring present = LbOs::GetWorkingDirectory();
    EXPECT_EQ(LbOs::QueryEntry(L"here.txt"), LbOs::EEntry::File);
    EXPECT_TRUE(LbOs::SetWorkingDirectory(former));
    EXPECT_EQ(LbOs::QueryEntry(L"here.txt"), LbOs::EEntry::Missing);
    EXPECT_EQ(LbPath::GetLastComponent(present), L"größer");
    EXPECT_TRUE(LbOs::IsAbsolutePath(present));
    EXPECT_FALSE(LbPath::IsSeparator(present.back()));
}

TEST(OsFiles, KeepsTheWorkingDirectoryOnFailure)
{
    const ScopedFolder folder;
    const std::wstring former = LbOs::GetWorkingDirectory();
    EXPECT_FALSE(LbOs::SetWorkingDirectory(folder.GetPathOf(L"missing")));
    EXPECT_FALSE(LbOs::SetWorkingDirectory(folder.WriteFile(L"file", "x")));
    EXPECT_EQ(LbOs::GetWorkingDirectory(), former);
}

TEST(OsFiles, FindsItsOwnExecutable)
{
    const std::wstring path = LbOs::GetExecutablePath();
    EXPECT_TRUE(LbOs::IsAbsolutePath(path));
    EXPECT_EQ(LbOs::QueryEntry(path), LbOs::EEntry::File);
    EXPECT_TRUE(path.ends_with(LbOs::c_ExecutableSuffix));
}

TEST(OsFiles, ReturnsWellKnownDirectoriesWithoutSeparator)
{
    for (const std::wstring& path : {LbOs::GetUserDataDirectory(), LbOs::GetTemporaryDirectory()})
    {
        ASSERT_FALSE(path.empty());
        EXPECT_TRUE(LbOs::IsAbsolutePath(path));
        EXPECT_FALSE(LbPath::IsSeparator(path.back()));
    }
}

TEST(OsFiles, DistinguishesAbsoluteFromRelativePaths)
{
    EXPECT_TRUE(LbOs::IsAbsolutePath(LbOs::GetTemporaryDirectory()));
    EXPECT_FALSE(LbOs::IsAbsolutePath(L""));
    EXPECT_FALSE(LbOs::IsAbsolutePath(L"a"));
    EXPECT_FALSE(LbOs::IsAbsolutePath(L"a/b"));
    EXPECT_FALSE(LbOs::IsAbsolutePath(L"../a"));
    EXPECT_FALSE(LbOs::IsAbsolutePath(L"C:a"));
    EXPECT_FALSE(LbOs::IsAbsolutePath(L"\\a"));
    EXPECT_FALSE(LbOs::IsAbsolutePath(L"1:\\a"));
}

TEST(OsFiles, RecognisesDrivesAndServersOnWindows)
{
    const bool hasDrives = LbPath::c_Separator == L'\\';
    EXPECT_EQ(LbOs::IsAbsolutePath(L"C:\\a"), hasDrives);
    EXPECT_EQ(LbOs::IsAbsolutePath(L"z:/"), hasDrives);
    EXPECT_EQ(LbOs::IsAbsolutePath(L"\\\\server\\share"), hasDrives);
    EXPECT_EQ(LbOs::IsAbsolutePath(L"/a"), !hasDrives);
}

TEST(OsFiles, OpensOnlyFiles)
{
    const ScopedFolder folder;
    for (const std::wstring& path : {folder.GetPathOf(L"missing/file"), folder.MakeFolder(L"directory"), std::wstring(),
                                     folder.GetPathOf(L"file") + L'\0' + L"x"})
    {
        EXPECT_EQ(LbOs::OpenForReading(path), LbOs::c_InvalidFile);
        EXPECT_EQ(LbOs::OpenForWriting(path), LbOs::c_InvalidFile);
    }
    EXPECT_EQ(LbOs::OpenForReading(folder.GetPathOf(L"missing")), LbOs::c_InvalidFile);
    EXPECT_EQ(list(folder.GetPath()), (Entries{{L"directory", true}}));
}

TEST(OsFiles, ReportsAHandleThatCannotBeUsed)
{
    const ScopedFolder folder;
    std::array<char, 4> buffer{};
    const LbOs::FileHandle written = LbOs::OpenForWriting(folder.GetPathOf(L"file"));
    ASSERT_NE(written, LbOs::c_InvalidFile);
    EXPECT_EQ(LbOs::ReadFileBytes(written, buffer.data(), buffer.size()), -1);
    EXPECT_TRUE(LbOs::WriteFileBytes(written, "abc", 3));
    EXPECT_EQ(LbOs::GetFileSize(written), 3);
    EXPECT_TRUE(LbOs::CloseFile(written));

    const LbOs::FileHandle read = LbOs::OpenForReading(folder.GetPathOf(L"file"));
    ASSERT_NE(read, LbOs::c_InvalidFile);
    EXPECT_FALSE(LbOs::WriteFileBytes(read, "x", 1));
    EXPECT_EQ(LbOs::ReadFileBytes(read, buffer.data(), buffer.size()), 3);
    EXPECT_EQ(LbOs::ReadFileBytes(read, buffer.data(), buffer.size()), 0);
    EXPECT_TRUE(LbOs::CloseFile(read));
    EXPECT_FALSE(LbOs::CloseFile(LbOs::c_InvalidFile));
    EXPECT_EQ(LbOs::GetFileSize(LbOs::c_InvalidFile), -1);
}

TEST(OsFiles, ReadsAFileThatIsStillBeingWritten)
{
    const ScopedFolder folder;
    const std::wstring path = folder.GetPathOf(L"file");
    const LbOs::FileHandle written = LbOs::OpenForWriting(path);
    EXPECT_TRUE(LbOs::WriteFileBytes(written, "ab", 2));
    const LbOs::FileHandle read = LbOs::OpenForReading(path);
    std::array<char, 4> buffer{};
    EXPECT_EQ(LbOs::ReadFileBytes(read, buffer.data(), buffer.size()), 2);
    EXPECT_TRUE(LbOs::CloseFile(read));
    EXPECT_TRUE(LbOs::CloseFile(written));
}

} // namespace

#include "base/lbfilesystem.h"

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/lbpath.h"
#include "base/lustream.h"
#include "base/os/files.h"
#include "tests/support/os/testaids.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/scopedworkingdirectory.h"

namespace
{

using Names = std::vector<std::wstring>;

/// Writes the text with WriteWhole. With `isFull`, writing fails as if the disk were full.
void writeWhole(const std::wstring& path, const std::string& text, bool isFull = false)
{
    LbFileSystem::WriteWhole(path, [&](const std::wstring& place) {
        LuStreamWriteBinaryFile file(place);
        file.Write(text.data(), text.size());
        file.Close();
        if (isFull)
        {
            throw LbException(L"voll");
        }
    });
}

TEST(LbFileSystem, WritesWholeFiles)
{
    const ScopedFolder folder;
    const std::wstring path = folder.GetPathOf(L"Datei.txt");
    writeWhole(path, "one");
    writeWhole(path, "other");

    EXPECT_EQ(LbFileSystem::ReadFile8Bit(path), "other");
    EXPECT_EQ(LbFileSystem::GetFileNames(folder.GetPath()), Names{L"Datei.txt"});
}

TEST(LbFileSystem, KeepsTheFormerFileWhenWritingIsAborted)
{
    const ScopedFolder folder;
    const std::wstring path = folder.WriteFile(L"Datei.txt", "former");

    EXPECT_THROW(writeWhole(path, "half", true), LbException);
    EXPECT_THROW(writeWhole(folder.GetPathOf(L"andere.txt"), "half", true), LbException);

    EXPECT_EQ(LbFileSystem::ReadFile8Bit(path), "former");
    EXPECT_EQ(LbFileSystem::GetFileNames(folder.GetPath()), Names{L"Datei.txt"});
}

TEST(LbFileSystem, WritesWholeFilesByRelativePaths)
{
    const ScopedFolder folder;
    const ScopedWorkingDirectory directory(folder.GetPath());
    writeWhole(L"Datei.txt", "text");

    EXPECT_EQ(LbFileSystem::GetFileNames(folder.GetPath()), Names{L"Datei.txt"});
}

TEST(LbFileSystem, WritesWholeFilesThroughLinks)
{
    const ScopedFolder folder;
    const std::wstring target = folder.WriteFile(L"Ziel/Datei.txt", "former");
    const std::wstring link = folder.GetPathOf(L"Link.txt");
    const std::wstring toNothing = folder.GetPathOf(L"neu.txt");
    if (!LbOs::MakeLink(link, target) || !LbOs::MakeLink(toNothing, folder.GetPathOf(L"Ziel/neu.txt")))
    {
        GTEST_SKIP() << "links cannot be made here";
    }
    writeWhole(link, "text");
    writeWhole(toNothing, "new");

    EXPECT_TRUE(LbOs::IsLink(link));
    EXPECT_TRUE(LbOs::IsLink(toNothing));
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(target), "text");
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(toNothing), "new");
    EXPECT_EQ(LbFileSystem::GetFileNames(folder.GetPathOf(L"Ziel")), (Names{L"Datei.txt", L"neu.txt"}));
}

TEST(LbFileSystem, WritesWholeFilesWithoutChangingTheirHardLinks)
{
    const ScopedFolder folder;
    const std::wstring path = folder.WriteFile(L"Datei.txt", "former");
    std::filesystem::create_hard_link(std::filesystem::path(path), std::filesystem::path(path + L".alt"));
    writeWhole(path, "text");

    EXPECT_EQ(LbFileSystem::ReadFile8Bit(path), "text");
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(path + L".alt"), "former");
}

TEST(LbFileSystem, WritesToDevicesDirectly)
{
    const std::wstring device = LbPath::c_Separator == L'\\' ? L"NUL" : L"/dev/null";
    std::wstring written;
    LbFileSystem::WriteWhole(device, [&written](const std::wstring& place) { written = place; });

    EXPECT_EQ(written, device);
}

TEST(LbFileSystem, WritesToTheFileItselfInAReadOnlyFolder)
{
    const ScopedFolder folder;
    const std::wstring path = folder.WriteFile(L"Datei.txt", "former");
    const std::filesystem::path place(folder.GetPath());
    std::filesystem::permissions(place, std::filesystem::perms::all);
    std::filesystem::permissions(std::filesystem::path(path), std::filesystem::perms::all);
    std::filesystem::permissions(place,
                                 std::filesystem::perms::owner_write | std::filesystem::perms::group_write |
                                     std::filesystem::perms::others_write,
                                 std::filesystem::perm_options::remove);
    const std::optional<int> result = LbOs::RunInFork([&path] {
        if (!LbOs::GiveUpRights())
        {
            return 1;
        }
        writeWhole(path, "text");
        return 0;
    });
    std::filesystem::permissions(place, std::filesystem::perms::all);
    if (!result)
    {
        GTEST_SKIP() << "a process cannot drop its rights here";
    }

    EXPECT_EQ(result, 0);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(path), "text");
}

TEST(LbFileSystem, FindsTheFolderOfTheExecutable)
{
    const std::wstring directory = LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable);
    EXPECT_TRUE(LbOs::IsAbsolutePath(directory));
    EXPECT_EQ(directory.back(), LbPath::c_Separator);
    EXPECT_TRUE(LbFileSystem::IsFile(directory + LbPath::GetLastComponent(LbOs::GetExecutablePath())));
}

TEST(LbFileSystem, FindsTheFolderForTemporaryFiles)
{
    const std::wstring directory = LbFileSystem::GetDirectory(LbFileSystem::eDK_Temporary);
    EXPECT_EQ(directory.back(), LbPath::c_Separator);
    EXPECT_TRUE(LbFileSystem::IsDirectory(directory));
}

TEST(LbFileSystem, FindsTheFolderForTheUsersData)
{
    const std::wstring directory = LbFileSystem::GetDirectory(LbFileSystem::eDK_UserData);
    EXPECT_TRUE(LbOs::IsAbsolutePath(directory));
    EXPECT_EQ(directory.back(), LbPath::c_Separator);
}

TEST(LbFileSystem, PlacesDebugOutputInTheFolderForTemporaryFiles)
{
    EXPECT_EQ(LbFileSystem::GetDirectory(LbFileSystem::eDK_DebugOutput),
              LbFileSystem::GetDirectory(LbFileSystem::eDK_Temporary) + L"LuDebugOutput" + LbPath::c_Separator);
}

TEST(LbFileSystem, RefusesUnknownDirectoryKinds)
{
    EXPECT_THROW(LbFileSystem::GetDirectory(static_cast<LbFileSystem::EDirectoryKind>(3)), LbException);
}

TEST(LbFileSystem, DistinguishesFilesFromDirectories)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"file.txt", "x");
    EXPECT_TRUE(LbFileSystem::Exists(file));
    EXPECT_TRUE(LbFileSystem::IsFile(file));
    EXPECT_FALSE(LbFileSystem::IsDirectory(file));
    EXPECT_TRUE(LbFileSystem::Exists(folder.GetPath()));
    EXPECT_FALSE(LbFileSystem::IsFile(folder.GetPath()));
    EXPECT_TRUE(LbFileSystem::IsDirectory(folder.GetPath()));
}

TEST(LbFileSystem, DoesNotFindMissingPaths)
{
    const ScopedFolder folder;
    for (const std::wstring& path : {folder.GetPathOf(L"missing"), folder.GetPathOf(L"no/where"), std::wstring()})
    {
        EXPECT_FALSE(LbFileSystem::Exists(path));
        EXPECT_FALSE(LbFileSystem::IsFile(path));
        EXPECT_FALSE(LbFileSystem::IsDirectory(path));
    }
}

TEST(LbFileSystem, DoesNotCutNamesAtANullCharacter)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"file.txt", "x");
    EXPECT_FALSE(LbFileSystem::Exists(file + L'\0' + L"more"));
}

TEST(LbFileSystem, CreatesDirectoriesWithTheirParents)
{
    const ScopedFolder folder;
    EXPECT_TRUE(LbFileSystem::AssertDirectory(folder.GetPathOf(L"a/b/größer/")));
    EXPECT_TRUE(LbFileSystem::IsDirectory(folder.GetPathOf(L"a/b/größer")));
}

TEST(LbFileSystem, AcceptsAnExistingDirectory)
{
    const ScopedFolder folder;
    EXPECT_TRUE(LbFileSystem::AssertDirectory(folder.GetPath()));
    EXPECT_TRUE(LbFileSystem::AssertDirectory(LbPath::WithoutSeparator(folder.GetPath())));
}

TEST(LbFileSystem, DoesNotReplaceAFileWithADirectory)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"file", "x");
    EXPECT_FALSE(LbFileSystem::AssertDirectory(file));
    EXPECT_FALSE(LbFileSystem::AssertDirectory(folder.GetPathOf(L"file/below")));
    EXPECT_FALSE(LbFileSystem::AssertDirectory(L""));
    EXPECT_TRUE(LbFileSystem::IsFile(file));
}

TEST(LbFileSystemConcurrency, CreatesOneDirectoryFromManyThreads)
{
    const ScopedFolder folder;
    for (int round = 0; round < 20; ++round)
    {
        const std::wstring path = folder.GetPathOf(std::to_wstring(round) + L"/a/b/c");
        std::atomic<int> created = 0;
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread)
        {
            threads.emplace_back([&path, &created] { created += LbFileSystem::AssertDirectory(path) ? 1 : 0; });
        }
        for (std::thread& thread : threads)
        {
            thread.join();
        }
        EXPECT_EQ(created, 4);
    }
}

TEST(LbFileSystem, ListsFilesInOrderOfTheirNames)
{
    const ScopedFolder folder;
    for (const wchar_t* name : {L"b.txt", L"C.txt", L"a", L"ä", L"10", L"9", L".hidden"})
    {
        folder.WriteFile(name, "");
    }
    folder.MakeFolder(L"folder");
    EXPECT_EQ(LbFileSystem::GetFileNames(folder.GetPath()),
              (Names{L".hidden", L"10", L"9", L"C.txt", L"a", L"b.txt", L"ä"}));
}

TEST(LbFileSystem, ListsNoFilesOfMissingDirectories)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"file", "x");
    EXPECT_EQ(LbFileSystem::GetFileNames(folder.GetPathOf(L"missing")), Names());
    EXPECT_EQ(LbFileSystem::GetFileNames(file), Names());
    EXPECT_EQ(LbFileSystem::GetFileNames(L""), Names());
    EXPECT_EQ(LbFileSystem::GetFileNames(folder.MakeFolder(L"empty")), Names());
}

TEST(LbFileSystem, RemovesATree)
{
    const ScopedFolder folder;
    folder.WriteFile(L"tree/a/b/file.txt", "x");
    folder.WriteFile(L"tree/größer.txt", "x");
    folder.MakeFolder(L"tree/empty");
    EXPECT_TRUE(LbFileSystem::RemoveTree(folder.GetPathOf(L"tree/")));
    EXPECT_FALSE(LbFileSystem::Exists(folder.GetPathOf(L"tree")));
    EXPECT_TRUE(LbFileSystem::Exists(folder.GetPath()));
}

TEST(LbFileSystem, SucceedsInRemovingAMissingTree)
{
    const ScopedFolder folder;
    EXPECT_TRUE(LbFileSystem::RemoveTree(folder.GetPathOf(L"missing")));
}

TEST(LbFileSystem, RemovesLinksWithoutTheirTargets)
{
    const ScopedFolder folder;
    const std::wstring kept = folder.WriteFile(L"target/kept.txt", "x");
    folder.WriteFile(L"tree/file.txt", "x");
    if (!LbOs::MakeLink(folder.GetPathOf(L"tree/link"), folder.GetPathOf(L"target")))
    {
        GTEST_SKIP() << "links cannot be made here";
    }
    EXPECT_TRUE(LbFileSystem::RemoveTree(folder.GetPathOf(L"tree")));
    EXPECT_FALSE(LbFileSystem::Exists(folder.GetPathOf(L"tree")));
    EXPECT_TRUE(LbFileSystem::IsFile(kept));
}

TEST(LbFileSystem, ReadsWholeFiles)
{
    const ScopedFolder folder;
    std::string bytes(200'000, '\0');
    for (std::size_t index = 0; index < bytes.size(); ++index)
    {
        bytes[index] = static_cast<char>(index * 31);
    }
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(folder.WriteFile(L"large", bytes)), bytes);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(folder.WriteFile(L"lines", "a\r\nb\n\x1A")), "a\r\nb\n\x1A");
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(folder.WriteFile(L"empty", "")), "");
}

TEST(LbFileSystem, NamesTheFileThatCannotBeRead)
{
    const ScopedFolder folder;
    for (const std::wstring& path : {folder.GetPathOf(L"missing.txt"), folder.MakeFolder(L"directory")})
    {
        try
        {
            LbFileSystem::ReadFile8Bit(path);
            ADD_FAILURE() << "no exception";
        }
        catch (const LbException& exception)
        {
            EXPECT_EQ(exception.GetMessageText(), L"Datei " + path + L" konnte nicht geöffnet werden");
        }
    }
}

TEST(LbFileSystem, HandlesPathsOfMoreThan400Characters)
{
    const ScopedFolder folder;
    std::wstring name = L"start";
    for (int level = 0; level < 8; ++level)
    {
        name += L"/" + std::wstring(60, static_cast<wchar_t>(L'a' + level));
    }
    const std::wstring file = folder.WriteFile(name + L"/file.txt", "deep");
    ASSERT_GT(file.size(), 400U);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(file), "deep");
    EXPECT_EQ(LbFileSystem::GetFileNames(folder.GetPathOf(name)), Names{L"file.txt"});
    EXPECT_TRUE(LbFileSystem::RemoveTree(folder.GetPathOf(L"start")));
    EXPECT_FALSE(LbFileSystem::Exists(folder.GetPathOf(L"start")));
}

} // namespace

#include "base/lustream.h"

#include <string>

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "tests/support/fulldevice.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// The message of the exception that `function` throws, or "no exception".
template<typename F>
std::wstring getFailure(const F& function)
{
    try
    {
        function();
    }
    catch (const LbException& exception)
    {
        return exception.GetMessageText();
    }
    return L"no exception";
}

std::wstring notOpened(const std::wstring& path)
{
    return L"Datei " + path + L" konnte nicht geöffnet werden";
}

std::wstring notWritten(const std::wstring& path)
{
    return L"Datei " + path + L" konnte nicht geschrieben werden";
}

TEST(LuStreamWriteTextMemory, CollectsText)
{
    LuStreamWriteTextMemory stream;
    EXPECT_EQ(stream.GetText(), L"");
    stream.Write(L"größer\n");
    stream.Write(L"");
    stream.Write(L"€");
    EXPECT_EQ(stream.GetText(), L"größer\n€");
}

TEST(LuStreamWriteTextMemory, DiscardsItsText)
{
    LuStreamWriteTextMemory stream;
    stream.Write(L"former");
    stream.Clear();
    stream.Write(L"new");
    EXPECT_EQ(stream.GetText(), L"new");
}

TEST(LuStreamWriteTextMemory, FormatsThroughItsBase)
{
    LuStreamWriteTextMemory memory;
    LuStreamWriteText& stream = memory;
    stream.WriteFormat(L"%s: %u\n", L"Anzahl", 3U);
    stream.WriteFormat(L"%%");
    EXPECT_EQ(memory.GetText(), L"Anzahl: 3\n%");
}

TEST(LuStreamWriteTextMemory, WritesAMistakeInARuntimeFormatAsALine)
{
    LuStreamWriteTextMemory memory;
    memory.WriteFormat(LbRuntimeFormat(L"%d"));
    EXPECT_EQ(memory.GetText(), L"Fehler: lustream_test.cpp, Zeile " + std::to_wstring(__LINE__ - 1) +
                                    L": Formattext mit Fehler (zu wenige Argumente): \"%d\"\n");
}

TEST(LuStreamWriteBinaryFile, WritesBytesUnchanged)
{
    const ScopedFolder folder;
    const std::wstring path = folder.GetPathOf(L"file.bin");
    const std::string bytes("a\nb\r\n\0\xFF\x1A", 8);
    LuStreamWriteBinaryFile file(path);
    file.Write(bytes.data(), bytes.size());
    file.Close();
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(path), bytes);
}

TEST(LuStreamWriteBinaryFile, KeepsTheOrderOfSmallAndLargeWrites)
{
    const ScopedFolder folder;
    const std::wstring path = folder.GetPathOf(L"file.bin");
    std::string expected;
    LuStreamWriteBinaryFile file(path);
    for (const std::size_t size : {1U, 65'535U, 0U, 2U, 65'536U, 100'000U, 3U, 65'534U, 300'000U, 7U})
    {
        const std::string bytes(size, static_cast<char>('a' + size % 26));
        file.Write(bytes.data(), bytes.size());
        expected += bytes;
    }
    file.Close();
    EXPECT_TRUE(LbFileSystem::ReadFile8Bit(path) == expected);
}

TEST(LuStreamWriteBinaryFile, TruncatesAnExistingFile)
{
    const ScopedFolder folder;
    const std::wstring path = folder.WriteFile(L"file.bin", "a longer content");
    LuStreamWriteBinaryFile file(path);
    file.Write("new", 3);
    file.Close();
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(path), "new");
}

TEST(LuStreamWriteBinaryFile, WritesEverythingOnDestruction)
{
    const ScopedFolder folder;
    const std::wstring path = folder.GetPathOf(L"file.bin");
    {
        LuStreamWriteBinaryFile file(path);
        file.Write("text", 4);
    }
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(path), "text");
}

TEST(LuStreamWriteBinaryFile, RefusesWritesAfterClose)
{
    const ScopedFolder folder;
    const std::wstring path = folder.GetPathOf(L"file.bin");
    LuStreamWriteBinaryFile file(path);
    file.Close();
    EXPECT_EQ(getFailure([&file] { file.Write("x", 1); }), notWritten(path));
    EXPECT_EQ(getFailure([&file] { file.Close(); }), L"no exception");
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(path), "");
}

TEST(LuStreamWriteBinaryFile, NamesTheFileThatCannotBeOpened)
{
    const ScopedFolder folder;
    for (const std::wstring& path :
         {folder.MakeFolder(L"directory"), folder.GetPathOf(L"missing/file"), std::wstring()})
    {
        EXPECT_EQ(getFailure([&path] { const LuStreamWriteBinaryFile file(path); }), notOpened(path));
    }
}

TEST(LuStreamWriteBinaryFile, ReportsAFullDiskWhileWriting)
{
    const std::wstring device = GetFullDevice();
    if (device.empty())
    {
        GTEST_SKIP() << "no full device here";
    }
    LuStreamWriteBinaryFile file(device);
    const std::string bytes(100'000, 'x');
    EXPECT_EQ(getFailure([&] { file.Write(bytes.data(), bytes.size()); }), notWritten(device));
}

TEST(LuStreamWriteBinaryFile, ReportsAFullDiskOnClose)
{
    const std::wstring device = GetFullDevice();
    if (device.empty())
    {
        GTEST_SKIP() << "no full device here";
    }
    LuStreamWriteBinaryFile file(device);
    file.Write("x", 1);
    EXPECT_EQ(getFailure([&file] { file.Close(); }), notWritten(device));
    EXPECT_EQ(getFailure([&file] { file.Close(); }), L"no exception");
}

TEST(LuStreamWriteASCIIFile, WritesOneBytePerCharacter)
{
    const ScopedFolder folder;
    const std::wstring path = folder.GetPathOf(L"file.txt");
    LuStreamWriteASCIIFile file(path);
    file.Write(L"Größe\t5 €\n");
    file.WriteFormat(L"%d\r\n", 7);
    file.Close();
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(path), "Gr\xF6\xDF"
                                                "e\t5 ?\n7\r\n");
}

TEST(LuStreamWriteASCIIFile, PassesOnFailuresOfItsFile)
{
    const ScopedFolder folder;
    const std::wstring missing = folder.GetPathOf(L"missing/file.txt");
    EXPECT_EQ(getFailure([&missing] { const LuStreamWriteASCIIFile file(missing); }), notOpened(missing));
    const std::wstring path = folder.GetPathOf(L"file.txt");
    LuStreamWriteASCIIFile file(path);
    file.Close();
    EXPECT_EQ(getFailure([&file] { file.Write(L"x"); }), notWritten(path));
}

TEST(LuStreamReadBinaryFile, ReadsPieceByPiece)
{
    const ScopedFolder folder;
    LuStreamReadBinaryFile file(folder.WriteFile(L"file.bin", "abcdefg"));
    EXPECT_EQ(file.GetSize(), 7U);
    std::string buffer(4, '\0');
    EXPECT_EQ(file.Read(buffer.data(), 4), 4U);
    EXPECT_EQ(buffer, "abcd");
    EXPECT_EQ(file.Read(buffer.data(), 4), 3U);
    EXPECT_EQ(buffer, "efgd");
    EXPECT_EQ(file.Read(buffer.data(), 4), 0U);
    EXPECT_EQ(file.Read(buffer.data(), 0), 0U);
}

TEST(LuStreamReadBinaryFile, ReadsAnEmptyFile)
{
    const ScopedFolder folder;
    LuStreamReadBinaryFile file(folder.WriteFile(L"empty", ""));
    char byte = 0;
    EXPECT_EQ(file.GetSize(), 0U);
    EXPECT_EQ(file.Read(&byte, 1), 0U);
}

TEST(LuStreamReadBinaryFile, NamesTheFileThatCannotBeOpened)
{
    const ScopedFolder folder;
    for (const std::wstring& path : {folder.GetPathOf(L"missing"), folder.MakeFolder(L"directory"), std::wstring()})
    {
        EXPECT_EQ(getFailure([&path] { const LuStreamReadBinaryFile file(path); }), notOpened(path));
    }
}

TEST(LuStreamReadBinaryFile, RefusesReadsAfterClose)
{
    const ScopedFolder folder;
    const std::wstring path = folder.WriteFile(L"file", "x");
    LuStreamReadBinaryFile file(path);
    file.Close();
    file.Close();
    char byte = 0;
    EXPECT_EQ(getFailure([&file, &byte] { file.Read(&byte, 1); }), L"Datei " + path + L" konnte nicht gelesen werden");
}

TEST(LuStreamReadBinaryFile, LetsItsFileBeRemovedAfterDestruction)
{
    const ScopedFolder folder;
    const std::wstring path = folder.WriteFile(L"file", "x");
    {
        const LuStreamReadBinaryFile file(path);
    }
    EXPECT_TRUE(LbOs::RemoveFile(path));
    EXPECT_FALSE(LbFileSystem::Exists(path));
}

} // namespace

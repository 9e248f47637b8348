#include "testing/lutestsuite/duplicates/filechecksums.h"

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuite::CFileChecksums;

std::string MakeContent(std::size_t size)
{
    std::string content(size, '\0');
    for (std::size_t index = 0; index < size; ++index)
    {
        content[index] = static_cast<char>(index * 31 + index / 251);
    }
    return content;
}

LuMurmurHash3::S128 GetChecksum(const std::string& content)
{
    return LuMurmurHash3::GetOptimizedChecksum128(content.data(), static_cast<std::uint32_t>(content.size()), 0);
}

/// Tests sizes around those of the checksum's blocks and of the pieces that are read. Each file is longer or shorter
/// than the one before.
TEST(FileChecksums, CoverTheWholeContent)
{
    constexpr std::size_t c_Piece = 128 * 1024;
    const ScopedFolder folder;
    CFileChecksums checksums;
    for (const std::size_t size : {std::size_t{5}, 3 * c_Piece + 5, std::size_t{0}, std::size_t{16}, c_Piece - 1,
                                   std::size_t{17}, c_Piece, 8 * c_Piece, c_Piece + 1, 2 * c_Piece - 1, c_Piece + 16})
    {
        const std::string content = MakeContent(size);
        EXPECT_TRUE(checksums.Get(folder.WriteFile(L"Datei", content)) == GetChecksum(content)) << size;
    }
}

TEST(FileChecksums, OfBeginningsIgnoreTheRestOfTheFile)
{
    const ScopedFolder folder;
    CFileChecksums checksums;
    const std::string beginning = MakeContent(CFileChecksums::sc_uiBeginning);

    EXPECT_TRUE(checksums.GetOfBeginning(folder.WriteFile(L"a", beginning)) == GetChecksum(beginning));
    EXPECT_TRUE(checksums.GetOfBeginning(folder.WriteFile(L"b", beginning + "x")) == GetChecksum(beginning));
    EXPECT_TRUE(checksums.GetOfBeginning(folder.WriteFile(L"c", "short")) == GetChecksum("short"));
}

/// A file in /proc has the size 0 but contains bytes, like a file that grows while it is read.
TEST(FileChecksums, FailForAFileWithMoreBytesThanItsSize)
{
    const std::wstring path = L"/proc/self/status";
    if (!LbFileSystem::IsFile(path))
    {
        GTEST_SKIP() << "every file has a size here";
    }

    EXPECT_THROW(CFileChecksums().Get(path), LbException);
}

} // namespace

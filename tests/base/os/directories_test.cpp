#include "base/os/directories.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/scopedfolder.h"
#include "tests/support/scopedworkingdirectory.h"

namespace
{

class HoldsFile : public testing::Test
{
protected:
    bool Holds(const std::wstring& name) const { return LbOs::HoldsFile(m_folder.GetPath(), name); }

    ScopedFolder m_folder;
};

TEST_F(HoldsFile, IsTrueForAFileOfExactlyThatName)
{
    m_folder.WriteFile(L"Grüße 1.txt", "");

    EXPECT_TRUE(Holds(L"Grüße 1.txt"));
    EXPECT_FALSE(Holds(L"grüße 1.txt"));
    EXPECT_FALSE(Holds(L"Grüße 1"));
    EXPECT_FALSE(Holds(L"Grüße 1.txt."));
    EXPECT_FALSE(Holds(L"Grüße 1.txt "));
    EXPECT_FALSE(Holds(L"Grüße*"));
    EXPECT_FALSE(Holds(L"Grüße?1.txt"));
}

TEST_F(HoldsFile, IsTrueForADirectoryWithoutSeparatorAtItsEnd)
{
    m_folder.WriteFile(L"data/a.txt", "");
    std::wstring directory = m_folder.GetPathOf(L"data");

    EXPECT_TRUE(LbOs::HoldsFile(directory, L"a.txt"));
}

TEST_F(HoldsFile, IsFalseForFolders)
{
    m_folder.MakeFolder(L"folder");

    EXPECT_FALSE(Holds(L"folder"));
    EXPECT_FALSE(Holds(L"."));
    EXPECT_FALSE(Holds(L".."));
}

TEST_F(HoldsFile, IsFalseForPathsAndInvalidNames)
{
    m_folder.WriteFile(L"folder/a.txt", "");

    EXPECT_FALSE(Holds(L"folder/a.txt"));
    EXPECT_FALSE(Holds(L"folder/../folder/a.txt"));
    EXPECT_FALSE(Holds(L""));
    EXPECT_FALSE(Holds(std::wstring(L"a\0b", 3)));
    EXPECT_FALSE(LbOs::HoldsFile(L"", m_folder.WriteFile(L"b.txt", "")));
}

TEST_F(HoldsFile, IsFalseOnceTheFileIsGone)
{
    const std::wstring path = m_folder.WriteFile(L"a.txt", "");
    ASSERT_TRUE(Holds(L"a.txt"));
    ASSERT_TRUE(LbOs::RemoveFile(path));

    EXPECT_FALSE(Holds(L"a.txt"));
    EXPECT_FALSE(LbOs::HoldsFile(m_folder.GetPathOf(L"missing"), L"a.txt"));
}

TEST(DirectoryStamp, StaysTheSameForAnUnchangedDirectory)
{
    const ScopedFolder folder;

    ASSERT_TRUE(LbOs::GetDirectoryStamp(folder.GetPath()).has_value());
    EXPECT_EQ(LbOs::GetDirectoryStamp(folder.GetPath()), LbOs::GetDirectoryStamp(folder.GetPath()));
}

TEST(DirectoryStamp, DistinguishesDirectories)
{
    const ScopedFolder folder;
    const std::wstring one = folder.MakeFolder(L"one");
    const std::wstring other = folder.MakeFolder(L"other");

    EXPECT_NE(LbOs::GetDirectoryStamp(one)->identity, LbOs::GetDirectoryStamp(other)->identity);
}

TEST(HomeDirectory, BecomesTheWorkingDirectoryAgain)
{
    const ScopedFolder folder;
    const ScopedFolder other;
    const ScopedWorkingDirectory start(folder.GetPath());
    const std::wstring path = LbOs::GetWorkingDirectory();
    const LbOs::CHomeDirectory home(folder.GetPath());

    EXPECT_TRUE(home.Ensure());
    EXPECT_EQ(LbOs::GetWorkingDirectory(), path);
    ASSERT_TRUE(LbOs::SetWorkingDirectory(other.GetPath()));
    EXPECT_TRUE(home.Ensure());
    EXPECT_EQ(LbOs::GetWorkingDirectory(), path);
}

TEST(HomeDirectory, DoesNotChangeTheWorkingDirectoryIfItIsMissing)
{
    const ScopedFolder folder;
    const std::wstring before = LbOs::GetWorkingDirectory();

    EXPECT_FALSE(LbOs::CHomeDirectory(folder.GetPathOf(L"missing")).Ensure());
    EXPECT_EQ(LbOs::GetWorkingDirectory(), before);
}

TEST(DirectoryStamp, ExistsForDirectoriesOnly)
{
    const ScopedFolder folder;

    EXPECT_FALSE(LbOs::GetDirectoryStamp(folder.WriteFile(L"a.txt", "")).has_value());
    EXPECT_FALSE(LbOs::GetDirectoryStamp(folder.GetPathOf(L"missing")).has_value());
    EXPECT_FALSE(LbOs::GetDirectoryStamp(L"").has_value());
}

} // namespace

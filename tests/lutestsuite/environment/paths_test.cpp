// Path functions and the per-user folder.

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/os/platform.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/scopedenvironment.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// The path with the platform's separators.
std::wstring Native(std::wstring path)
{
    std::ranges::replace(path, L'/', LbOs::c_PathSeparator);
    return path;
}

TEST(AddBackslash, AppendsASeparatorUnlessThereIsOne)
{
    EXPECT_EQ(LuTestSuiteUtils::AddBackslash(Native(L"a/b")), Native(L"a/b/"));
    EXPECT_EQ(LuTestSuiteUtils::AddBackslash(Native(L"a/b/")), Native(L"a/b/"));
}

TEST(RemoveBackslash, RemovesOneTrailingSeparator)
{
    EXPECT_EQ(LuTestSuiteUtils::RemoveBackslash(Native(L"a/b/")), Native(L"a/b"));
    EXPECT_EQ(LuTestSuiteUtils::RemoveBackslash(Native(L"a/b//")), Native(L"a/b/"));
}

TEST(RemoveBackslash, LeavesAPathWithoutTrailingSeparatorUnchanged)
{
    EXPECT_EQ(LuTestSuiteUtils::RemoveBackslash(Native(L"a/b")), Native(L"a/b"));
    EXPECT_EQ(LuTestSuiteUtils::RemoveBackslash(L""), L"");
}

TEST(GetFileNameOnly, ReturnsTheLastComponent)
{
    EXPECT_EQ(LuTestSuiteUtils::GetFileNameOnly(Native(L"a/b/datei.txt")), L"datei.txt");
    EXPECT_EQ(LuTestSuiteUtils::GetFileNameOnly(L"datei.txt"), L"datei.txt");
    EXPECT_EQ(LuTestSuiteUtils::GetFileNameOnly(L""), L"");
}

TEST(GetFileNameOnly, ReturnsTheLastFolderOfADirectoryString)
{
    EXPECT_EQ(LuTestSuiteUtils::GetFileNameOnly(Native(L"a/CTest/")), L"CTest");
}

TEST(GetPrunedPath, ReturnsThePathWithoutItsLastComponent)
{
    EXPECT_EQ(LuTestSuiteUtils::GetPrunedPath(Native(L"a/b/datei.txt")), Native(L"a/b/"));
    EXPECT_EQ(LuTestSuiteUtils::GetPrunedPath(Native(L"a/b/")), Native(L"a/"));
}

TEST(GetPrunedPath, ReturnsAnEmptyPathForASingleComponent)
{
    EXPECT_EQ(LuTestSuiteUtils::GetPrunedPath(L"datei.txt"), L"");
}

class SplitFileName : public testing::Test
{
protected:
    void Split(const std::wstring& path) { LuTestSuiteUtils::SplitFileName(path, m_folder, m_name); }

    std::wstring m_folder = L"alt";
    std::wstring m_name = L"alt";
};

TEST_F(SplitFileName, SplitsAtTheLastSeparator)
{
    Split(Native(L"a/b/datei.txt"));

    EXPECT_EQ(m_folder, Native(L"a/b/"));
    EXPECT_EQ(m_name, L"datei.txt");
}

TEST_F(SplitFileName, ReturnsNoFolderForABareName)
{
    Split(L"datei.txt");

    EXPECT_EQ(m_folder, L"");
    EXPECT_EQ(m_name, L"datei.txt");
}

TEST_F(SplitFileName, ReturnsNoNameForADirectoryString)
{
    Split(Native(L"a/b/"));

    EXPECT_EQ(m_folder, Native(L"a/b/"));
    EXPECT_EQ(m_name, L"");
}

TEST_F(SplitFileName, AcceptsTheSameVariableForPathAndResult)
{
    m_folder = Native(L"a/b");
    LuTestSuiteUtils::SplitFileName(m_folder, m_folder, m_name);

    EXPECT_EQ(m_folder, Native(L"a/"));
    EXPECT_EQ(m_name, L"b");
}

TEST(AssertDirectory, CreatesAMissingDirectory)
{
    const ScopedFolder folder;
    const std::wstring path = folder.GetPathOf(L"neu/");

    EXPECT_TRUE(LuTestSuiteUtils::AssertDirectory(path));

    EXPECT_TRUE(LbFileSystem::IsDirectory(path));
}

TEST(AssertDirectory, AcceptsAnExistingDirectory)
{
    const ScopedFolder folder;

    EXPECT_TRUE(LuTestSuiteUtils::AssertDirectory(folder.GetPath()));
}

TEST(AssertDirectory, FailsIfThePathIsAFile)
{
    const ScopedFolder folder;

    EXPECT_FALSE(LuTestSuiteUtils::AssertDirectory(folder.WriteFile(L"datei", "")));
}

TEST(GetLocalTestSuiteDir, LiesInThePerUserFolder)
{
    const ScopedUserFolder user;

    EXPECT_EQ(LuTestSuiteUtils::GetLocalTestSuiteDir(), user.GetPath() + Native(L"LuTestSuite/Orvell/"));
}

TEST(GetLocalTestSuiteDir, CreatesMissingFolders)
{
    const ScopedUserFolder user;
    ASSERT_FALSE(LbFileSystem::Exists(user.GetPath() + L"LuTestSuite"));

    EXPECT_TRUE(LbFileSystem::IsDirectory(LuTestSuiteUtils::GetLocalTestSuiteDir()));
}

TEST(GetLocalTestSuiteDir, KeepsExistingFiles)
{
    const ScopedUserFolder user;
    user.WriteLastConfig("<Config/>");

    EXPECT_TRUE(LbFileSystem::IsFile(LuTestSuiteUtils::GetLocalTestSuiteDir() + L"LastConfig.xml"));
}

} // namespace

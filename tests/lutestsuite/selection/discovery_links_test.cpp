// The search of a data directory that contains links to folders.

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/lbpath.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/os/testaids.h"
#include "tests/support/scopedfolder.h"

namespace
{

using testing::ElementsAre;
using testing::SizeIs;
using testing::UnorderedElementsAre;

class ScanLinkedFolders : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!Link(L"probe", m_target.GetPath()))
        {
            GTEST_SKIP() << "links to folders cannot be made here";
        }
    }

    /// Creates a link with this name in the data directory.
    bool Link(const std::wstring& name, const std::wstring& target) const
    {
        return LbOs::MakeLink(m_folder.GetPathOf(name), LbPath::WithoutSeparator(target));
    }

    /// The data directories found below the test's folder, with "/".
    std::vector<std::wstring> Scan() const
    {
        std::vector<std::wstring> directories;
        for (const auto& test : LuTestSuiteUtils::ScanDirectoryForUnitTests(m_folder.GetPath(), true))
        {
            directories.push_back(test.dataDirectory.substr(m_folder.GetPath().size()));
            std::ranges::replace(directories.back(), L'\\', L'/');
        }
        return directories;
    }

    ScopedFolder m_folder;
    ScopedFolder m_target;
};

TEST_F(ScanLinkedFolders, FindsTwoClassesThatLinkToOneFolder)
{
    ASSERT_TRUE(Link(L"CScanNamed", m_target.GetPath()));
    ASSERT_TRUE(Link(L"CScanFiles", m_target.GetPath()));

    EXPECT_THAT(Scan(), UnorderedElementsAre(L"CScanNamed/", L"CScanFiles/"));
}

TEST_F(ScanLinkedFolders, FindsAClassTwiceIfTwoLinksLeadToOneFolder)
{
    m_folder.MakeFolder(L"a");
    m_folder.MakeFolder(L"b");
    ASSERT_TRUE(Link(L"a/CScanNamed", m_target.GetPath()));
    ASSERT_TRUE(Link(L"b/CScanNamed", m_target.GetPath()));

    EXPECT_THAT(Scan(), UnorderedElementsAre(L"a/CScanNamed/", L"b/CScanNamed/"));
}

TEST_F(ScanLinkedFolders, FollowsNoLinkToAParentFolder)
{
    m_folder.MakeFolder(L"a/b/CScanNamed");
    ASSERT_TRUE(Link(L"a/b/oben", m_folder.GetPath()));
    ASSERT_TRUE(Link(L"a/b/hier", m_folder.GetPathOf(L"a/b")));

    EXPECT_THAT(Scan(), ElementsAre(L"a/b/CScanNamed/"));
}

TEST_F(ScanLinkedFolders, SearchesALinkedFolderOnce)
{
    m_target.MakeFolder(L"tiefer/CScanNamed");
    ASSERT_TRUE(Link(L"x", m_target.GetPath()));
    ASSERT_TRUE(Link(L"y", m_target.GetPath()));

    EXPECT_THAT(Scan(), SizeIs(1));
}

} // namespace

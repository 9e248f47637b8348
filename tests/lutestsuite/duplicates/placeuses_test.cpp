#include "testing/lutestsuite/duplicates/placeuses.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "base/lbpath.h"
#include "tests/support/apart.h"
#include "tests/support/scopedfolder.h"

namespace
{

class PlaceUses : public testing::Test
{
protected:
    std::wstring Write(const std::wstring& name) const
    {
        return LbOs::GetCanonicalPlace(m_folder.WriteFile(name, "x"));
    }

    std::wstring HardLink(const std::wstring& file, const std::wstring& name) const
    {
        const std::wstring path = m_folder.GetPathOf(name);
        std::filesystem::create_hard_link(std::filesystem::path(file), std::filesystem::path(path));
        return LbOs::GetCanonicalPlace(path);
    }

    ScopedFolder m_folder;
    LuTestSuite::CPlaceUses m_uses;
};

TEST_F(PlaceUses, AreCounted)
{
    const std::wstring a = Write(L"a.txt");
    const std::wstring b = Write(L"b.txt");
    m_uses.Add(a);
    m_uses.Add(a);

    EXPECT_TRUE(m_uses.Has(a));
    EXPECT_FALSE(m_uses.Has(b));
    m_uses.Remove(a);
    EXPECT_TRUE(m_uses.Has(a));
    m_uses.Remove(a);
    EXPECT_FALSE(m_uses.Has(a));
}

TEST_F(PlaceUses, AreAssumedIfTheFolderCannotBeRead)
{
    EXPECT_TRUE(m_uses.Has(m_folder.GetPathOf(L"fehlt")));
}

TEST_F(PlaceUses, OfAFileDoNotProtectItsHardLinks)
{
    const std::wstring a = Write(L"a.txt");
    const std::wstring beside = HardLink(a, L"b.txt");
    m_folder.MakeFolder(L"Ordner");
    const std::wstring elsewhere = HardLink(a, L"Ordner/a.txt");
    m_uses.Add(a);

    EXPECT_TRUE(m_uses.Has(a));
    EXPECT_FALSE(m_uses.Has(beside));
    EXPECT_FALSE(m_uses.Has(elsewhere));
}

/// Tests a file with one name and a file with several names.
TEST_F(PlaceUses, MatchFileNamesInOtherLetterCase)
{
    const std::wstring a = Write(L"a.txt");
    const std::wstring other = LbPath::GetParent(a) + L"A.TXT";
    if (!LbOs::GetPlaceStatus(other))
    {
        GTEST_SKIP() << "file names are case-sensitive here";
    }
    m_uses.Add(other);

    EXPECT_TRUE(m_uses.Has(a));
    HardLink(a, L"b.txt");
    EXPECT_TRUE(m_uses.Has(a));
}

TEST_F(PlaceUses, MatchFilesInAFolderWithTwoPaths)
{
    const std::wstring a = Write(L"1/a.txt");
    const std::wstring alias = m_folder.MakeFolder(L"auch");
    const std::wstring original = m_folder.GetPathOf(L"1");
    const bool isChecked = CheckApart([&] { return LbOs::MountFolder(alias, original); },
                                      [&] {
                                          m_uses.Add(LbOs::GetCanonicalPlace(alias + L"a.txt"));
                                          EXPECT_TRUE(m_uses.Has(a));
                                          const std::wstring hardLink = HardLink(a, L"1/b.txt");
                                          EXPECT_TRUE(m_uses.Has(a));
                                          EXPECT_FALSE(m_uses.Has(hardLink));
                                      });
    if (!isChecked)
    {
        GTEST_SKIP() << "folders cannot be mounted here";
    }
}

} // namespace

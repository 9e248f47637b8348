// Tests of the effect of links on a deletion.

#include <filesystem>
#include <functional>

#include "tests/lutestsuite/duplicates/duplicatestest.h"
#include "tests/support/apart.h"

namespace
{

/// Data sets of two unit tests, "1" and "2", and links between them.
class DuplicateLinks : public DuplicatesTest
{
protected:
    void SetUp() override
    {
        m_folder.MakeFolder(L"1/CDataSetModel");
        m_folder.MakeFolder(L"2/CDataSetModel");
        if (!LbOs::MakeLink(m_folder.GetPathOf(L"Probe"), L"1"))
        {
            GTEST_SKIP() << "links cannot be made here";
        }
        LbOs::RemoveFile(m_folder.GetPathOf(L"Probe"));
    }

    std::wstring WriteAt(const std::wstring& name, int age, const std::string& content = "gut") const
    {
        const std::wstring path = m_folder.WriteFile(name, content);
        SetAge(path, age);
        return path;
    }

    std::wstring LinkAt(const std::wstring& name, const std::wstring& target) const
    {
        const std::wstring path = m_folder.GetPathOf(name);
        EXPECT_TRUE(LbOs::MakeLink(path, target)) << LbEncoding::ToUtf8(path);
        return path;
    }

    static std::wstring Refusal(const std::wstring& path)
    {
        return L"Fehler während Löschen von Datei " + path + L"\n";
    }

    static std::wstring Unread(const std::wstring& path)
    {
        return L"Fehler: " + path + L" konnte nicht gelesen werden, deshalb wird nichts gelöscht.\n";
    }

    /// Deletes duplicates as a user with full access to the data directory, except for `folder`, where only `rights`
    /// apply.
    void DetectWithoutRights(const std::wstring& folder, std::filesystem::perms rights,
                             const std::function<void(const std::wstring& text)>& check)
    {
        for (const wchar_t* const name : {L"", L"1/CDataSetModel", L"2/CDataSetModel"})
        {
            std::filesystem::permissions(std::filesystem::path(m_folder.GetPathOf(name)), std::filesystem::perms::all);
        }
        const std::filesystem::path place(LbPath::WithoutSeparator(folder));
        std::filesystem::permissions(place, rights);
        const bool isChecked = CheckApart(LbOs::GiveUpRights, [&] { check(Detect(eDM_Delete)); });
        std::filesystem::permissions(place, std::filesystem::perms::owner_all);
        if (!isChecked)
        {
            GTEST_SKIP() << "a process cannot drop its rights here";
        }
    }

    static constexpr std::filesystem::perms c_Closed = std::filesystem::perms::none;
    static constexpr std::filesystem::perms c_ReadOnly{0555};

    static bool Has(const std::wstring& text, const std::wstring& part)
    {
        return text.find(part) != std::wstring::npos;
    }
};

TEST_F(DuplicateLinks, InLinkedFoldersKeepTheirTargets)
{
    WriteAt(L"1/CDataSetModel/x1.txt", 200);
    const std::wstring target = WriteAt(L"1/CDataSetModel/x2.txt", 100);
    const ScopedFolder elsewhere;
    elsewhere.MakeFolder(L"CDataSetModel");
    const std::wstring link = elsewhere.GetPathOf(L"CDataSetModel/k.txt");
    ASSERT_TRUE(LbOs::MakeLink(link, target));
    LinkAt(L"Gemeinsam", LbPath::WithoutSeparator(elsewhere.GetPath()));

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_TRUE(Has(text, L"    x1.txt... [KEEP]\n" + Refusal(target))) << LbEncoding::ToUtf8(text);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(link), "gut");
}

TEST_F(DuplicateLinks, InLinkedFoldersOfLinkedFoldersKeepTheirTargets)
{
    WriteAt(L"1/CDataSetModel/x1.txt", 200);
    const std::wstring target = WriteAt(L"1/CDataSetModel/x2.txt", 100);
    const ScopedFolder elsewhere;
    const ScopedFolder farther;
    const std::wstring link = farther.GetPathOf(L"k.txt");
    ASSERT_TRUE(LbOs::MakeLink(link, target));
    ASSERT_TRUE(LbOs::MakeLink(elsewhere.GetPathOf(L"weiter"), LbPath::WithoutSeparator(farther.GetPath())));
    // A link back to the data directory. The search must not follow it endlessly.
    ASSERT_TRUE(LbOs::MakeLink(elsewhere.GetPathOf(L"zurück"), LbPath::WithoutSeparator(m_folder.GetPath())));
    LinkAt(L"Gemeinsam", LbPath::WithoutSeparator(elsewhere.GetPath()));

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_TRUE(Has(text, Refusal(target))) << LbEncoding::ToUtf8(text);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(link), "gut");
}

/// The link is redundant but must stay, because it is not in the unit test's own folder.
TEST_F(DuplicateLinks, ThatMustNotBeDeletedKeepTheirTargets)
{
    WriteAt(L"1/CDataSetModel/x1.txt", 200);
    const std::wstring target = WriteAt(L"1/CDataSetModel/x2.txt", 100);
    const ScopedFolder elsewhere;
    SetAge(elsewhere.WriteFile(L"CDataSetModel/a.txt", "gut"), 300);
    const std::wstring link = elsewhere.GetPathOf(L"CDataSetModel/k.txt");
    ASSERT_TRUE(LbOs::MakeLink(link, target));
    LinkAt(L"Gemeinsam", LbPath::WithoutSeparator(elsewhere.GetPath()));

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_TRUE(Has(text, Refusal(m_folder.GetPathOf(L"Gemeinsam/CDataSetModel/k.txt")))) << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(Has(text, Refusal(target))) << LbEncoding::ToUtf8(text);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(link), "gut");
}

TEST_F(DuplicateLinks, InAReadOnlyFolderKeepTheirTargets)
{
    WriteAt(L"1/CDataSetModel/x1.txt", 200);
    const std::wstring target = WriteAt(L"1/CDataSetModel/x2.txt", 100);
    WriteAt(L"2/CDataSetModel/a.txt", 300);
    const std::wstring link = LinkAt(L"2/CDataSetModel/k.txt", target);

    DetectWithoutRights(m_folder.GetPathOf(L"2/CDataSetModel"), c_ReadOnly, [&](const std::wstring& text) {
        EXPECT_TRUE(Has(text, Refusal(link))) << LbEncoding::ToUtf8(text);
        EXPECT_TRUE(Has(text, Refusal(target))) << LbEncoding::ToUtf8(text);
        EXPECT_EQ(LbFileSystem::ReadFile8Bit(link), "gut");
    });
}

/// If only the order of the sets counted, the file would be deleted before the link.
TEST_F(DuplicateLinks, ThatAreRedundantAreDeletedBeforeTheirTargets)
{
    WriteAt(L"1/CDataSetModel/x1.txt", 200);
    const std::wstring target = WriteAt(L"1/CDataSetModel/x2.txt", 100);
    WriteAt(L"2/CDataSetModel/a.txt", 300);
    const std::wstring link = LinkAt(L"2/CDataSetModel/k.txt", target);
    WriteAt(L"1/CDataSetModel/x3.txt", 100);
    const std::wstring own = LinkAt(L"1/CDataSetModel/x4.txt", L"x3.txt");

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_FALSE(Has(text, L"Fehler")) << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(Has(text, L"    x1.txt... [KEEP]\n    x2.txt... [DELETED]\n    x3.txt... [DELETED]\n"
                          L"    x4.txt... [DELETED]\n"))
        << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(Has(text, L"    a.txt... [KEEP]\n    k.txt... [DELETED]\n")) << LbEncoding::ToUtf8(text);
    EXPECT_FALSE(LbOs::IsLink(link) || LbOs::IsLink(own) || LbFileSystem::Exists(target));
}

/// Each link leads through another one, whose name sorts before or after its own.
TEST_F(DuplicateLinks, ThatAreRedundantAreDeletedBeforeTheLinksOnTheirPaths)
{
    WriteAt(L"1/CDataSetModel/a.txt", 300);
    WriteAt(L"1/CDataSetModel/d.txt", 100);
    LinkAt(L"1/CDataSetModel/c.txt", L"d.txt");
    LinkAt(L"1/CDataSetModel/e.txt", L"c.txt");
    LinkAt(L"1/CDataSetModel/b.txt", L"e.txt");

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_FALSE(Has(text, L"Fehler")) << LbEncoding::ToUtf8(text);
    EXPECT_EQ(LbFileSystem::GetFileNames(m_folder.GetPathOf(L"1/CDataSetModel/")), std::vector<std::wstring>{L"a.txt"});
}

/// The kept link leads to a link outside the data directory, which leads back through a linked folder.
TEST_F(DuplicateLinks, OnThePathOfAKeptLinkAreKept)
{
    const ScopedFolder elsewhere;
    const std::wstring file = elsewhere.WriteFile(L"x.txt", "gut");
    WriteAt(L"1/CDataSetModel/a.txt", 300);
    SetAge(file, 100);
    const std::wstring way = LinkAt(L"1/CDataSetModel/b.txt", file);
    LinkAt(L"Umweg", L"1");
    const std::wstring middle = elsewhere.GetPathOf(L"y.txt");
    ASSERT_TRUE(LbOs::MakeLink(middle, m_folder.GetPathOf(L"Umweg/CDataSetModel/b.txt")));
    const std::wstring kept = LinkAt(L"2/CDataSetModel/k.txt", middle);

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_TRUE(Has(text, Refusal(way))) << LbEncoding::ToUtf8(text);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(kept), "gut");
}

TEST_F(DuplicateLinks, ThatAreBrokenDoNotPreventDeletion)
{
    WriteAt(L"1/CDataSetModel/a.txt", 300);
    const std::wstring copy = WriteAt(L"1/CDataSetModel/b.txt", 100);
    LinkAt(L"1/CDataSetModel/c.txt", L"fehlt");
    LinkAt(L"1/CDataSetModel/d.txt", LbPath::ToNative(L"fehlt/auch.txt"));
    LinkAt(L"1/CDataSetModel/e.txt", L"e.txt");

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_FALSE(Has(text, L"Fehler")) << LbEncoding::ToUtf8(text);
    EXPECT_FALSE(LbFileSystem::Exists(copy));
}

/// The name has the maximum length, so that no longer temporary name is possible.
TEST_F(DuplicateLinks, WithTheLongestPossibleNameAreDeleted)
{
    const std::wstring file = WriteAt(L"1/CDataSetModel/a.txt", 300);
    const std::wstring link = LinkAt(L"1/CDataSetModel/" + std::wstring(251, L'x') + L".txt", file);
    LinkAt(L"2/CDataSetModel/k.txt", file);

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_FALSE(Has(text, L"Fehler")) << LbEncoding::ToUtf8(text);
    EXPECT_FALSE(LbOs::IsLink(link));
}

/// A folder without access may contain links.
TEST_F(DuplicateLinks, ThatMayBeInAnUnreadableFolderPreventDeletion)
{
    WriteAt(L"1/CDataSetModel/a.txt", 300);
    const std::wstring copy = WriteAt(L"1/CDataSetModel/b.txt", 100);
    const std::wstring closed = m_folder.MakeFolder(L"zu");

    DetectWithoutRights(closed, c_Closed, [&](const std::wstring& text) {
        EXPECT_TRUE(Has(text, Unread(closed))) << LbEncoding::ToUtf8(text);
        EXPECT_TRUE(Has(text, L"    a.txt... [KEEP]\n" + Refusal(copy))) << LbEncoding::ToUtf8(text);
        EXPECT_TRUE(LbFileSystem::Exists(copy));
    });
}

/// The link leads through another link in a folder without access, which leads to a copy.
TEST_F(DuplicateLinks, ThatLeadThroughAnUnreadableFolderPreventDeletion)
{
    WriteAt(L"1/CDataSetModel/a.txt", 300);
    const std::wstring copy = WriteAt(L"1/CDataSetModel/b.txt", 100);
    const ScopedFolder elsewhere;
    const std::wstring closed = elsewhere.MakeFolder(L"zu");
    ASSERT_TRUE(LbOs::MakeLink(closed + L"m.txt", copy));
    const std::wstring link = LinkAt(L"2/CDataSetModel/k.txt", closed + L"m.txt");

    DetectWithoutRights(closed, c_Closed, [&](const std::wstring& text) {
        EXPECT_TRUE(Has(text, Unread(link))) << LbEncoding::ToUtf8(text);
        EXPECT_TRUE(Has(text, L"    a.txt... [KEEP]\n" + Refusal(copy))) << LbEncoding::ToUtf8(text);
    });
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(link), "gut");
}

/// The linked folder is in a folder without access, and contains a link to a copy.
TEST_F(DuplicateLinks, ToFoldersInAnUnreadableFolderPreventDeletion)
{
    WriteAt(L"1/CDataSetModel/a.txt", 300);
    const std::wstring copy = WriteAt(L"1/CDataSetModel/b.txt", 100);
    const ScopedFolder elsewhere;
    const std::wstring inside = elsewhere.MakeFolder(L"zu/innen");
    ASSERT_TRUE(LbOs::MakeLink(inside + L"m.txt", copy));
    const std::wstring link = LinkAt(L"Verweis", LbPath::WithoutSeparator(inside));

    DetectWithoutRights(elsewhere.GetPathOf(L"zu"), c_Closed, [&](const std::wstring& text) {
        EXPECT_TRUE(Has(text, Unread(link))) << LbEncoding::ToUtf8(text);
        EXPECT_TRUE(Has(text, L"    a.txt... [KEEP]\n" + Refusal(copy))) << LbEncoding::ToUtf8(text);
    });
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(inside + L"m.txt"), "gut");
}

TEST_F(DuplicateLinks, AreNotSearchedIfThereIsNothingToDelete)
{
    WriteAt(L"1/CDataSetModel/a.txt", 300);

    DetectWithoutRights(m_folder.MakeFolder(L"zu"), c_Closed, [](const std::wstring& text) {
        EXPECT_FALSE(Has(text, L"Fehler")) << LbEncoding::ToUtf8(text);
    });
}

/// The folder of a copy is also mounted elsewhere, and a link there leads to the copy.
TEST_F(DuplicateLinks, IntoAMountedFolderKeepTheirTargets)
{
    WriteAt(L"1/CDataSetModel/a.txt", 300);
    const std::wstring target = WriteAt(L"1/CDataSetModel/b.txt", 100);
    const std::wstring copy = WriteAt(L"1/CDataSetModel/c.txt", 100);
    const ScopedFolder elsewhere;
    const std::wstring alias = elsewhere.MakeFolder(L"auch");
    const std::wstring link = LinkAt(L"2/CDataSetModel/k.txt", alias + L"b.txt");
    const std::wstring original = m_folder.GetPathOf(L"1/CDataSetModel");

    const bool isChecked =
        CheckApart([&] { return LbOs::MountFolder(alias, original); },
                   [&] {
                       const std::wstring text = Detect(eDM_Delete);
                       EXPECT_TRUE(Has(text, L"    a.txt... [KEEP]\n" + Refusal(target) + L"    c.txt... [DELETED]\n"))
                           << LbEncoding::ToUtf8(text);
                       EXPECT_EQ(LbFileSystem::ReadFile8Bit(link), "gut");
                   });
    if (!isChecked)
    {
        GTEST_SKIP() << "folders cannot be mounted here";
    }
    EXPECT_FALSE(LbFileSystem::Exists(copy));
}

} // namespace

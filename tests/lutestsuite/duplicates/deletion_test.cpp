#include <algorithm>
#include <thread>

#include "base/lbevent.h"
#include "base/os/filereplacement.h"
#include "base/os/folderlock.h"
#include "tests/lutestsuite/duplicates/duplicatestest.h"

namespace
{

using DuplicateDeletion = DuplicatesTest;

TEST_F(DuplicateDeletion, KeepsOnlyTheOldestFile)
{
    const std::wstring a = Write(L"a.txt", "gut", 100);
    const std::wstring b = Write(L"b.txt", "gut", 200);
    const std::wstring c = Write(L"c.txt", "gut", 100);
    const std::wstring d = Write(L"d.txt", "anders", 100);

    EXPECT_EQ(Detect(eDM_Delete),
              GetCheck() + GetDirectory() +
                  L"\n  Duplikat-Set (1/1):\n    b.txt... [KEEP]\n    a.txt... [DELETED]\n    c.txt... [DELETED]\n\n" +
                  GetSummary(1, 2));
    EXPECT_FALSE(LbFileSystem::Exists(a));
    EXPECT_FALSE(LbFileSystem::Exists(c));
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(b), "gut");
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(d), "anders");
}

TEST_F(DuplicateDeletion, DeletesLinksButNotTheirTargets)
{
    const ScopedFolder elsewhere;
    const std::wstring target = elsewhere.WriteFile(L"x.txt", "gut");
    SetAge(target, 100);
    const std::wstring kept = Write(L"a.txt", "gut", 200);
    if (!Link(L"b.txt", target))
    {
        GTEST_SKIP() << "links cannot be made here";
    }

    EXPECT_NE(Detect(eDM_Delete).find(L"    a.txt... [KEEP]\n    b.txt... [DELETED]\n"), std::wstring::npos);
    EXPECT_TRUE(LbFileSystem::IsFile(target));
    EXPECT_TRUE(LbFileSystem::IsFile(kept));
    EXPECT_FALSE(LbOs::IsLink(m_folder.GetPathOf(L"CDataSetModel/b.txt")));
}

TEST_F(DuplicateDeletion, KeepsTheTargetOfAKeptLink)
{
    const std::wstring target = Write(L"b.txt", "gut", 200);
    const std::wstring copy = Write(L"c.txt", "gut", 100);
    if (!Link(L"a.txt", target))
    {
        GTEST_SKIP() << "links cannot be made here";
    }

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_NE(
        text.find(L"    a.txt... [KEEP]\nFehler während Löschen von Datei " + target + L"\n    c.txt... [DELETED]\n"),
        std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(target), "gut");
    EXPECT_FALSE(LbFileSystem::Exists(copy));
}

/// The oldest data set of one set is a link to a redundant data set of another set.
TEST_F(DuplicateDeletion, KeepsTheTargetOfAKeptLinkInAnotherSet)
{
    const std::wstring copy = m_folder.WriteFile(L"1/CDataSetModel/c.txt", "gut");
    const std::wstring oldest = m_folder.WriteFile(L"2/CDataSetModel/x.txt", "gut");
    const std::wstring target = m_folder.WriteFile(L"2/CDataSetModel/y.txt", "gut");
    SetAge(copy, 100);
    SetAge(target, 200);
    SetAge(oldest, 300);
    if (!LbOs::MakeLink(m_folder.GetPathOf(L"1/CDataSetModel/a.txt"), LbPath::ToNative(L"../../2/CDataSetModel/y.txt")))
    {
        GTEST_SKIP() << "links cannot be made here";
    }

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_NE(text.find(L"    a.txt... [KEEP]\n    c.txt... [DELETED]\n"), std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_NE(text.find(L"    x.txt... [KEEP]\nFehler während Löschen von Datei " + target + L"\n"), std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"1/CDataSetModel/a.txt")), "gut");
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(oldest), "gut");
}

/// The link has no duplicate: "a.txt" is the only data set of its unit test, and "a.dat" is not a data set.
TEST_F(DuplicateDeletion, KeepsTheTargetOfALinkOutsideAllSets)
{
    const std::wstring oldest = m_folder.WriteFile(L"2/CDataSetModel/x.txt", "gut");
    const std::wstring target = m_folder.WriteFile(L"2/CDataSetModel/y.txt", "gut");
    SetAge(target, 200);
    SetAge(oldest, 300);
    m_folder.MakeFolder(L"1/CDataSetModel");
    for (const wchar_t* const link : {L"1/CDataSetModel/a.txt", L"1/CDataSetModel/a.dat"})
    {
        const std::wstring path = m_folder.GetPathOf(link);
        if (!LbOs::MakeLink(path, target))
        {
            GTEST_SKIP() << "links cannot be made here";
        }

        const std::wstring text = Detect(eDM_Delete);

        EXPECT_NE(text.find(L"    x.txt... [KEEP]\nFehler während Löschen von Datei " + target + L"\n"),
                  std::wstring::npos)
            << LbEncoding::ToUtf8(text);
        EXPECT_EQ(LbFileSystem::ReadFile8Bit(path), "gut");
        LbOs::RemoveFile(path);
        m_output.Clear();
    }
}

TEST_F(DuplicateDeletion, DeletesAllLinksToOneFileButTheFirst)
{
    const ScopedFolder elsewhere;
    const std::wstring target = elsewhere.WriteFile(L"x.txt", "gut");
    m_folder.MakeFolder(L"CDataSetModel");
    if (!Link(L"a.txt", target) || !Link(L"b.txt", target))
    {
        GTEST_SKIP() << "links cannot be made here";
    }

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_NE(text.find(L"    a.txt... [KEEP]\n    b.txt... [DELETED]\n"), std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_EQ(LbFileSystem::GetFileNames(GetDirectory()), std::vector<std::wstring>{L"a.txt"});
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(GetDirectory() + L"a.txt"), "gut");
}

TEST_F(DuplicateDeletion, KeepsALinkOnThePathOfAKeptLink)
{
    const ScopedFolder elsewhere;
    const std::wstring target = elsewhere.WriteFile(L"x.txt", "gut");
    m_folder.MakeFolder(L"CDataSetModel");
    if (!Link(L"a.txt", L"b.txt") || !Link(L"b.txt", target) || !Link(L"c.txt", target))
    {
        GTEST_SKIP() << "links cannot be made here";
    }

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_NE(text.find(L"    a.txt... [KEEP]\nFehler während Löschen von Datei " + GetDirectory() +
                        L"b.txt\n    c.txt... [DELETED]\n"),
              std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_EQ(LbFileSystem::GetFileNames(GetDirectory()), (std::vector<std::wstring>{L"a.txt", L"b.txt"}));
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(GetDirectory() + L"a.txt"), "gut");
}

TEST_F(DuplicateDeletion, DeletesNothingOutsideTheDataDirectory)
{
    const ScopedFolder elsewhere;
    const std::wstring a = elsewhere.WriteFile(L"CDataSetModel/a.txt", "gut");
    const std::wstring b = elsewhere.WriteFile(L"CDataSetModel/b.txt", "gut");
    SetAge(a, 200);
    if (!LbOs::MakeLink(m_folder.GetPathOf(L"CDataSetModel"), elsewhere.GetPathOf(L"CDataSetModel")))
    {
        GTEST_SKIP() << "links cannot be made here";
    }

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_NE(text.find(L"    a.txt... [KEEP]\nFehler während Löschen von Datei " + GetDirectory() + L"b.txt\n"),
              std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(LbFileSystem::IsFile(a));
    EXPECT_TRUE(LbFileSystem::IsFile(b));
}

/// The linked folder is inside the data directory, but it is not the unit test's own folder.
TEST_F(DuplicateDeletion, DeletesNothingBehindALinkInTheDataDirectory)
{
    const std::wstring a = m_folder.WriteFile(L"Sammlung/a.txt", "gut");
    const std::wstring b = m_folder.WriteFile(L"Sammlung/b.txt", "gut");
    SetAge(a, 200);
    if (!LbOs::MakeLink(m_folder.GetPathOf(L"CDataSetModel"), L"Sammlung"))
    {
        GTEST_SKIP() << "links cannot be made here";
    }

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_NE(text.find(L"    a.txt... [KEEP]\nFehler während Löschen von Datei " + GetDirectory() + L"b.txt\n"),
              std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(LbFileSystem::IsFile(a));
    EXPECT_TRUE(LbFileSystem::IsFile(b));
}

TEST_F(DuplicateDeletion, DeletesNothingBehindALinkAboveTheUnitTest)
{
    const ScopedFolder elsewhere;
    const std::wstring a = elsewhere.WriteFile(L"CDataSetModel/a.txt", "gut");
    const std::wstring b = elsewhere.WriteFile(L"CDataSetModel/b.txt", "gut");
    if (!LbOs::MakeLink(m_folder.GetPathOf(L"Gruppe"), LbPath::WithoutSeparator(elsewhere.GetPath())))
    {
        GTEST_SKIP() << "links cannot be made here";
    }

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_EQ(text.find(L"[DELETED]"), std::wstring::npos) << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(text.ends_with(GetSummary(1, 1))) << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(LbFileSystem::IsFile(a));
    EXPECT_TRUE(LbFileSystem::IsFile(b));
}

/// A link may be given as the data directory.
TEST_F(DuplicateDeletion, WorksInALinkedDataDirectory)
{
    const ScopedFolder elsewhere;
    const std::wstring kept = Write(L"a.txt", "gut", 200);
    const std::wstring copy = Write(L"b.txt", "gut");
    const std::wstring link = elsewhere.GetPathOf(L"Daten");
    if (!LbOs::MakeLink(link, LbPath::WithoutSeparator(m_folder.GetPath())))
    {
        GTEST_SKIP() << "links cannot be made here";
    }
    LuTestSuiteSetup setup = MakeSetup(link);
    setup.duplicateMode = eDM_Delete;

    const std::wstring text = Detect(setup);

    EXPECT_NE(text.find(L"    b.txt... [DELETED]\n"), std::wstring::npos) << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(LbFileSystem::IsFile(kept));
    EXPECT_FALSE(LbFileSystem::Exists(copy));
}

/// The same folder under other names: "." and "..", without trailing separator, on Windows in other letter case.
TEST_F(DuplicateDeletion, AcceptsAnySpellingOfTheDataDirectory)
{
    std::wstring roundabout = m_folder.MakeFolder(L"CDataSetModel/..") + L".";
    if (LbPath::c_Separator == L'\\')
    {
        std::ranges::transform(roundabout, roundabout.begin(), [](wchar_t character) {
            return character >= L'a' && character <= L'z' ? static_cast<wchar_t>(character - L'a' + L'A') : character;
        });
    }
    const std::wstring kept = Write(L"a.txt", "gut", 200);
    const std::wstring copy = Write(L"b.txt", "gut");
    LuTestSuiteSetup setup = MakeSetup(roundabout);
    setup.duplicateMode = eDM_Delete;

    const std::wstring text = Detect(setup);

    EXPECT_NE(text.find(L"    b.txt... [DELETED]\n"), std::wstring::npos) << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(LbFileSystem::IsFile(kept));
    EXPECT_FALSE(LbFileSystem::Exists(copy));
}

/// While the first line of the set is printed, a folder replaces a file that is to be deleted.
TEST_F(DuplicateDeletion, ReportsFilesThatCannotBeDeletedAndContinues)
{
    const std::wstring kept = Write(L"a.txt", "gut", 200);
    const std::wstring replaced = Write(L"b.txt", "gut");
    const std::wstring copy = Write(L"c.txt", "gut");
    m_output.OnLine(L"    a.txt... [KEEP]\n", [&replaced] {
        LbOs::RemoveFile(replaced);
        LbOs::MakeDirectory(replaced);
    });

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_NE(
        text.find(L"    a.txt... [KEEP]\nFehler während Löschen von Datei " + replaced + L"\n    c.txt... [DELETED]\n"),
        std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(text.ends_with(GetSummary(1, 2)));
    EXPECT_TRUE(LbFileSystem::IsDirectory(replaced));
    EXPECT_FALSE(LbFileSystem::Exists(copy));
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(kept), "gut");
}

/// While the first line of the set is printed, files that are to be deleted change.
TEST_F(DuplicateDeletion, KeepsFilesChangedDuringTheDeletion)
{
    Write(L"a.txt", "gut", 200);
    const std::wstring changed = Write(L"b.txt", "gut");
    const std::wstring longer = Write(L"c.txt", "gut");
    const std::wstring replaced = Write(L"d.txt", "gut");
    const std::wstring copy = Write(L"e.txt", "gut");
    m_output.OnLine(L"    a.txt... [KEEP]\n", [&] {
        // Each file differs in one property: time, size, identity.
        Write(L"b.txt", "neu", 99);
        Write(L"c.txt", "länger");
        LbOs::RenameFile(Write(L"neu.txt", "neu"), replaced);
    });

    const std::wstring text = Detect(eDM_Delete);

    std::wstring expected = L"    a.txt... [KEEP]\n";
    for (const std::wstring& path : {changed, longer, replaced})
    {
        expected += L"Fehler während Löschen von Datei " + path + L"\n";
    }
    EXPECT_NE(text.find(expected + L"    e.txt... [DELETED]\n"), std::wstring::npos) << LbEncoding::ToUtf8(text);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(changed), "neu");
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(longer), "länger");
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(replaced), "neu");
    EXPECT_FALSE(LbFileSystem::Exists(copy));
}

/// While the first line of the set is printed, only the bytes of a file change.
TEST_F(DuplicateDeletion, KeepsFilesWhoseBytesAloneChangedDuringTheDeletion)
{
    const std::string content(100'000, 'x');
    Write(L"a.txt", content, 200);
    const std::wstring changed = Write(L"b.txt", content);
    const std::wstring copy = Write(L"c.txt", content);
    std::string other = content;
    other.back() = 'y';
    m_output.OnLine(L"    a.txt... [KEEP]\n", [&] {
        const std::filesystem::path path(changed);
        const auto time = std::filesystem::last_write_time(path);
        Write(L"b.txt", other);
        std::filesystem::last_write_time(path, time);
    });

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_NE(text.find(L"[KEEP]\nFehler während Löschen von Datei " + changed + L"\n    c.txt... [DELETED]\n"),
              std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(changed), other);
    EXPECT_FALSE(LbFileSystem::Exists(copy));
}

/// When this deletion begins, another one has locked the folder. The other one deletes the file that this one keeps.
TEST_F(DuplicateDeletion, WaitsForAnotherDeletionInTheSameFolder)
{
    const std::wstring kept = Write(L"a.txt", "gut", 200);
    const std::wstring copy = Write(L"b.txt", "gut");
    LbEvent isLocked;
    LbEvent isReached;
    std::thread other([&] {
        const auto lock = LbOs::CFolderLock::Acquire(GetDirectory());
        isLocked.Set();
        isReached.Wait();
        LbOs::RemoveFile(kept);
    });
    isLocked.Wait();
    m_output.OnLine(L"    a.txt... [KEEP]\n", [&isReached] { isReached.Set(); });

    const std::wstring text = Detect(eDM_Delete);
    other.join();

    EXPECT_NE(text.find(L"[KEEP]\nFehler während Löschen von Datei " + copy + L"\n"), std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(copy), "gut");
}

/// While the first line of the set is printed, the only other file of this content gets another content.
TEST_F(DuplicateDeletion, KeepsACopyIfTheKeptFileHasChanged)
{
    Write(L"a.txt", "gut", 200);
    const std::wstring copy = Write(L"b.txt", "gut");
    m_output.OnLine(L"    a.txt... [KEEP]\n", [this] { Write(L"a.txt", "neu", 199); });

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_NE(text.find(L"    a.txt... [KEEP]\nFehler während Löschen von Datei " + copy + L"\n"), std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(copy), "gut");
}

TEST_F(DuplicateDeletion, DeletesHardLinksOfTheKeptFile)
{
    const std::wstring kept = Write(L"a.txt", "gut");
    const std::wstring name = GetDirectory() + L"b.txt";
    std::filesystem::create_hard_link(std::filesystem::path(kept), std::filesystem::path(name));

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_NE(text.find(L"    a.txt... [KEEP]\n    b.txt... [DELETED]\n"), std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(kept), "gut");
    EXPECT_FALSE(LbFileSystem::Exists(name));
}

/// On Windows, write protection prevents deletion, and all hard links of a file share the protection. After one link is
/// deleted, the kept one must still be protected.
TEST_F(DuplicateDeletion, PreservesTheWriteProtectionOfTheKeptFile)
{
    constexpr auto c_Writing = std::filesystem::perms::owner_write;
    const std::filesystem::path kept = Write(L"a.txt", "gut");
    const std::filesystem::path name = GetDirectory() + L"b.txt";
    std::filesystem::create_hard_link(kept, name);
    std::filesystem::permissions(kept, c_Writing | std::filesystem::perms::group_write,
                                 std::filesystem::perm_options::remove);

    Detect(eDM_Delete);

    EXPECT_FALSE(LbFileSystem::Exists(name.wstring()));
    EXPECT_EQ(std::filesystem::status(kept).permissions() & c_Writing, std::filesystem::perms::none);
    std::filesystem::permissions(kept, c_Writing, std::filesystem::perm_options::add);
}

/// While the first line of the set is printed, another program opens a file that is to be deleted.
TEST_F(DuplicateDeletion, ReportsFilesThatAreHeldOpenAndContinues)
{
    Write(L"a.txt", "gut", 200);
    const std::wstring held = Write(L"b.txt", "gut");
    const std::wstring copy = Write(L"c.txt", "gut");
    if (!LbOs::HoldFile(held))
    {
        GTEST_SKIP() << "files cannot be opened exclusively here";
    }
    std::shared_ptr<void> hold;
    m_output.OnLine(L"    a.txt... [KEEP]\n", [&] { hold = LbOs::HoldFile(held); });

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_NE(text.find(L"Fehler während Löschen von Datei " + held + L"\n    c.txt... [DELETED]\n"),
              std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(LbFileSystem::IsFile(held));
    EXPECT_FALSE(LbFileSystem::Exists(copy));
}

/// The search covers a folder and a link to it. Files found through the link are not deleted, even if the link is
/// searched first.
TEST_F(DuplicateDeletion, DeletesOnlyInTheFolderOfTheUnitTest)
{
    const std::wstring kept = Write(L"a.txt", "gut", 200);
    Write(L"b.txt", "gut");
    Write(L"c.txt", "gut");
    m_folder.MakeFolder(L"auch");
    if (!LbOs::MakeLink(m_folder.GetPathOf(L"auch/CDataSetModel"), m_folder.GetPathOf(L"CDataSetModel")))
    {
        GTEST_SKIP() << "links cannot be made here";
    }

    const std::wstring text = Detect(eDM_Delete);

    const auto count = [&text](std::wstring_view part) {
        std::size_t found = 0;
        for (std::size_t at = text.find(part); at != std::wstring::npos; at = text.find(part, at + 1))
        {
            ++found;
        }
        return found;
    };
    EXPECT_EQ(count(L"[DELETED]"), 2U) << LbEncoding::ToUtf8(text);
    EXPECT_EQ(count(L"Fehler während Löschen von Datei "), 2U) << LbEncoding::ToUtf8(text);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(kept), "gut");
}

} // namespace

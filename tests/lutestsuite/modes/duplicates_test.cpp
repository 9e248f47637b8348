#include <chrono>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/testaids.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/runtest.h"
#include "tests/support/scopedfolder.h"

namespace
{

std::filesystem::path toPath(const std::wstring& path)
{
    // Names of any script reach the system's wide or narrow calls as they stand.
    return std::filesystem::path(path);
}

class Duplicates : public RunTest
{
protected:
    std::wstring Detect(EDuplicateMode mode)
    {
        LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
        setup.duplicateMode = mode;
        return Detect(setup);
    }

    std::wstring Detect(const LuTestSuiteSetup& setup)
    {
        LuTestSuiteUtils::RunDuplicateDetection(setup, m_environment);
        return m_output.GetText();
    }

    /// Writes a data set that was last changed so many seconds ago.
    std::wstring Write(const std::wstring& name, const std::string& content, int age = 100) const
    {
        const std::wstring path = m_folder.WriteFile(L"CDataSetModel/" + name, content);
        SetAge(path, age);
        return path;
    }

    static void SetAge(const std::wstring& path, int age)
    {
        std::filesystem::last_write_time(toPath(path), s_Now - std::chrono::seconds(age));
    }

    bool Link(const std::wstring& name, const std::wstring& target) const
    {
        std::error_code error;
        std::filesystem::create_symlink(toPath(target), toPath(m_folder.GetPathOf(L"CDataSetModel/" + name)), error);
        return !error;
    }

    std::wstring GetCheck() const { return L"Check: " + GetDirectory() + L"\n\n"; }

    std::wstring GetDirectory() const { return m_folder.GetPathOf(L"CDataSetModel") + LbPath::c_Separator; }

    std::wstring GetSummary(int classes, int redundant) const
    {
        return LbFormat(L"Durchsuchtes Datenverzeichnis: %s\n"
                        L"Gefundene Unittest-Klassen: %d\n"
                        L"Redundante Datensätze darin: %d\n",
                        m_folder.GetPath(), classes, redundant);
    }

    static std::filesystem::file_time_type s_Now;

    ScopedFolder m_folder;
};

std::filesystem::file_time_type Duplicates::s_Now = std::filesystem::file_time_type::clock::now();

TEST_F(Duplicates, AreListedWithTheOldestFirst)
{
    Write(L"a.txt", "gut", 100);
    Write(L"b.txt", "gut", 300);
    Write(L"c.txt", "gut", 200);
    Write(L"d.txt", "anders");

    EXPECT_EQ(Detect(eDM_List), GetCheck() + GetDirectory() +
                                    L"\n  Duplikat-Set (1/1):\n    b.txt\n    a.txt\n    c.txt\n\n" + GetSummary(1, 2));
}

/// A younger one in front shows that the first of the oldest was chosen, not the first of all or the last.
TEST_F(Duplicates, OfOneAgeKeepTheFirst)
{
    Write(L"a.txt", "gut", 100);
    Write(L"b.txt", "gut", 200);
    Write(L"c.txt", "gut", 200);

    EXPECT_NE(Detect(eDM_List).find(L"    b.txt\n    a.txt\n    c.txt\n"), std::wstring::npos);
}

TEST_F(Duplicates, ComeInSetsByFirstAppearance)
{
    Write(L"a.txt", "gut 1");
    Write(L"b.txt", "gut 2");
    Write(L"c.txt", "gut 2", 200);
    Write(L"d.txt", "gut 1", 200);

    const std::wstring text = Detect(eDM_List);

    EXPECT_NE(text.find(L"  Duplikat-Set (1/2):\n    d.txt\n    a.txt\n"
                        L"  Duplikat-Set (2/2):\n    c.txt\n    b.txt\n\n"),
              std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(text.ends_with(GetSummary(1, 2)));
}

TEST_F(Duplicates, AreOnlyListedInTheListMode)
{
    const std::wstring a = Write(L"a.txt", "gut");
    const std::wstring b = Write(L"b.txt", "gut");
    Detect(eDM_List);

    EXPECT_TRUE(LbFileSystem::IsFile(a));
    EXPECT_TRUE(LbFileSystem::IsFile(b));
}

TEST_F(Duplicates, AreDeletedButForTheOldest)
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

TEST_F(Duplicates, AreOnlyLookedForInTheModeNone)
{
    Write(L"a.txt", "gut");
    Write(L"b.txt", "gut");

    EXPECT_EQ(Detect(eDM_None), GetCheck());
}

TEST_F(Duplicates, OfTwoUnitTestsAreNone)
{
    m_folder.WriteFile(L"a/CDataSetModel/x.txt", "gut");
    m_folder.WriteFile(L"b/CDataSetModel/x.txt", "gut");

    EXPECT_TRUE(Detect(eDM_List).ends_with(L"\n\n" + GetSummary(2, 0)));
}

TEST_F(Duplicates, MayBeEmptyFiles)
{
    Write(L"a.txt", "");
    Write(L"b.txt", "");

    EXPECT_TRUE(Detect(eDM_List).ends_with(L"\n    a.txt\n    b.txt\n\n" + GetSummary(1, 1)));
}

TEST_F(Duplicates, AreNoneWithoutUnitTests)
{
    EXPECT_EQ(Detect(eDM_List), L"\n" + GetSummary(0, 0));
}

TEST_F(Duplicates, AreLookedForInTheSelection)
{
    Write(L"a.txt", "gut");
    Write(L"b.txt", "gut");
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
    setup.duplicateMode = eDM_List;
    setup.excludes = {L"a\\.txt$"};

    EXPECT_EQ(Detect(setup), GetCheck() + GetSummary(1, 0));
}

TEST_F(Duplicates, AreNoneAmongCasesThatAreNoFiles)
{
    m_folder.WriteFile(L"CPassedModel/x.txt", "gut");
    m_folder.WriteFile(L"CPassedModel/y.txt", "gut");

    EXPECT_TRUE(Detect(eDM_Delete).ends_with(L"\n\n" + GetSummary(1, 0)));
}

TEST_F(Duplicates, DifferWhenOneIsTheBeginningOfTheOther)
{
    Write(L"a.txt", std::string(100, 'x'));
    Write(L"b.txt", std::string(99, 'x'));
    Write(L"c.txt", std::string(101, 'x'));

    EXPECT_TRUE(Detect(eDM_List).ends_with(GetSummary(1, 0)));
}

TEST_F(Duplicates, LeaveOutFilesThatAreTooLong)
{
    const std::wstring a = Write(L"a.txt", "gut");
    const std::wstring b = Write(L"b.txt", "gut");
    std::filesystem::resize_file(toPath(a), 0x100000000);
    std::filesystem::resize_file(toPath(b), 0x100000000);

    EXPECT_EQ(Detect(eDM_Delete), GetCheck() + GetSummary(1, 0));
    EXPECT_TRUE(LbFileSystem::IsFile(a));
    EXPECT_TRUE(LbFileSystem::IsFile(b));
}

TEST_F(Duplicates, LoseLinksButNotTheirTargets)
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

TEST_F(Duplicates, KeepTheTargetOfALinkThatIsKept)
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

/// The oldest of one set is a link to what another set could do without.
TEST_F(Duplicates, KeepWhatTheKeptLinkOfAnotherSetLeadsTo)
{
    const std::wstring copy = m_folder.WriteFile(L"1/CDataSetModel/c.txt", "gut");
    const std::wstring oldest = m_folder.WriteFile(L"2/CDataSetModel/x.txt", "gut");
    const std::wstring target = m_folder.WriteFile(L"2/CDataSetModel/y.txt", "gut");
    SetAge(copy, 100);
    SetAge(target, 200);
    SetAge(oldest, 300);
    std::error_code error;
    std::filesystem::create_symlink(toPath(LbPath::ToNative(L"../../2/CDataSetModel/y.txt")),
                                    toPath(m_folder.GetPathOf(L"1/CDataSetModel/a.txt")), error);
    if (error)
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

TEST_F(Duplicates, LoseAllLinksToOneFileButTheFirst)
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

TEST_F(Duplicates, KeepTheLinkThatAKeptOneLeadsThrough)
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

TEST_F(Duplicates, AreNotDeletedOutsideTheDataDirectory)
{
    const ScopedFolder elsewhere;
    const std::wstring a = elsewhere.WriteFile(L"CDataSetModel/a.txt", "gut");
    const std::wstring b = elsewhere.WriteFile(L"CDataSetModel/b.txt", "gut");
    SetAge(a, 200);
    std::error_code error;
    std::filesystem::create_directory_symlink(toPath(elsewhere.GetPathOf(L"CDataSetModel")),
                                              toPath(m_folder.GetPathOf(L"CDataSetModel")), error);
    if (error)
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

/// A pipe that nobody writes to.
TEST_F(Duplicates, DoNotWaitForWhatIsNoFile)
{
    Write(L"b.txt", "gut");
    Write(L"c.txt", "gut");
    if (!LbOs::MakePipeFile(GetDirectory() + L"a.txt"))
    {
        GTEST_SKIP() << "no pipes in folders here";
    }

    const std::wstring text = Detect(eDM_List);

    EXPECT_NE(text.find(L"Fehler während Einlesen von Datei " + GetDirectory() + L"a.txt\n"), std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(text.ends_with(GetSummary(1, 1)));
}

/// One folder under two names: the second time the files are gone already.
TEST_F(Duplicates, ReportWhatCannotBeDeletedAndGoOn)
{
    const std::wstring kept = Write(L"a.txt", "gut", 200);
    Write(L"b.txt", "gut");
    Write(L"c.txt", "gut");
    m_folder.MakeFolder(L"auch");
    std::error_code error;
    std::filesystem::create_directory_symlink(toPath(m_folder.GetPathOf(L"CDataSetModel")),
                                              toPath(m_folder.GetPathOf(L"auch/CDataSetModel")), error);
    if (error)
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

TEST_F(Duplicates, ReportWhatCannotBeReadAndGoOn)
{
    const std::wstring memory = L"/proc/self/mem";
    Write(L"b.txt", "gut");
    Write(L"c.txt", "gut");
    if (!LbFileSystem::IsFile(memory) || !Link(L"a.txt", memory))
    {
        GTEST_SKIP() << "no file that cannot be read";
    }

    const std::wstring text = Detect(eDM_List);

    EXPECT_TRUE(text.starts_with(L"Check: " + GetDirectory() + L"\nFehler während Einlesen von Datei " +
                                 GetDirectory() + L"a.txt\n\n"))
        << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(text.ends_with(GetSummary(1, 1)));
}

} // namespace

#include "tests/lutestsuite/duplicates/duplicatestest.h"

#include "base/lbexception.h"
#include "tests/support/scopedworkingdirectory.h"

namespace
{

using Duplicates = DuplicatesTest;

TEST_F(Duplicates, AreListedWithTheOldestFirst)
{
    Write(L"a.txt", "gut", 100);
    Write(L"b.txt", "gut", 300);
    Write(L"c.txt", "gut", 200);
    Write(L"d.txt", "anders");

    EXPECT_EQ(Detect(eDM_List), GetCheck() + GetDirectory() +
                                    L"\n  Duplikat-Set (1/1):\n    b.txt\n    a.txt\n    c.txt\n\n" + GetSummary(1, 2));
}

/// Two files have the same highest age, and a younger file precedes them: the first of the two must be kept, not the
/// first or the last of all files.
TEST_F(Duplicates, ListTheFirstOfEquallyOldFilesFirst)
{
    Write(L"a.txt", "gut", 100);
    Write(L"b.txt", "gut", 200);
    Write(L"c.txt", "gut", 200);

    EXPECT_NE(Detect(eDM_List).find(L"    b.txt\n    a.txt\n    c.txt\n"), std::wstring::npos);
}

TEST_F(Duplicates, AreListedInSetsOrderedByTheirFirstFiles)
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

TEST_F(Duplicates, AreNotDeletedInTheListMode)
{
    const std::wstring a = Write(L"a.txt", "gut");
    const std::wstring b = Write(L"b.txt", "gut");
    Detect(eDM_List);

    EXPECT_TRUE(LbFileSystem::IsFile(a));
    EXPECT_TRUE(LbFileSystem::IsFile(b));
}

TEST_F(Duplicates, AreNotListedInTheModeNone)
{
    Write(L"a.txt", "gut");
    Write(L"b.txt", "gut");

    EXPECT_EQ(Detect(eDM_None), GetCheck());
}

TEST_F(Duplicates, DoNotSpanUnitTests)
{
    m_folder.WriteFile(L"a/CDataSetModel/x.txt", "gut");
    m_folder.WriteFile(L"b/CDataSetModel/x.txt", "gut");

    EXPECT_TRUE(Detect(eDM_List).ends_with(L"\n\n" + GetSummary(2, 0)));
}

TEST_F(Duplicates, IncludeEmptyFiles)
{
    Write(L"a.txt", "");
    Write(L"b.txt", "");

    EXPECT_TRUE(Detect(eDM_List).ends_with(L"\n    a.txt\n    b.txt\n\n" + GetSummary(1, 1)));
}

TEST_F(Duplicates, DoNotExistWithoutUnitTests)
{
    EXPECT_EQ(Detect(eDM_List), L"\n" + GetSummary(0, 0));
}

TEST_F(Duplicates, AreSearchedInSelectedCasesOnly)
{
    Write(L"a.txt", "gut");
    Write(L"b.txt", "gut");
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
    setup.duplicateMode = eDM_List;
    setup.excludes = {L"a\\.txt$"};

    EXPECT_EQ(Detect(setup), GetCheck() + GetSummary(1, 0));
}

TEST_F(Duplicates, ExcludeAFileThatIsTheBeginningOfAnother)
{
    Write(L"a.txt", std::string(100, 'x'));
    Write(L"b.txt", std::string(99, 'x'));
    Write(L"c.txt", std::string(101, 'x'));

    EXPECT_TRUE(Detect(eDM_List).ends_with(GetSummary(1, 0)));
}

/// Opening a pipe without a writer would block.
TEST_F(Duplicates, AreSearchedWithoutWaitingForPipes)
{
    Write(L"b.txt", "gut");
    Write(L"c.txt", "gut");
    if (!LbOs::MakePipe(GetDirectory() + L"a.txt"))
    {
        GTEST_SKIP() << "pipes cannot be created in folders here";
    }

    const std::wstring text = Detect(eDM_List);

    EXPECT_NE(text.find(L"Fehler während Einlesen von Datei " + GetDirectory() + L"a.txt\n"), std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(text.ends_with(GetSummary(1, 1)));
}

/// Two files can be opened but not read: a small one, and a large one that is read in pieces.
TEST_F(Duplicates, AreFoundDespiteFilesWithLockedBytes)
{
    constexpr std::uint32_t c_Large = 1 << 20;
    const std::wstring small = Write(L"a.txt", "gut");
    const std::wstring large = Write(L"b.txt", std::string(c_Large, 'x'));
    Write(L"c.txt", std::string(c_Large, 'x'));
    Write(L"d.txt", std::string(c_Large, 'x'));
    Write(L"e.txt", "neu");
    const std::shared_ptr<void> holdSmall = LbOs::HoldBytes(small, 0, 1);
    const std::shared_ptr<void> holdLarge = LbOs::HoldBytes(large, c_Large / 2, 1);
    if (!holdSmall || !holdLarge)
    {
        GTEST_SKIP() << "parts of files cannot be locked here";
    }

    const std::wstring text = Detect(eDM_List);

    EXPECT_TRUE(text.starts_with(L"Check: " + GetDirectory() + L"\nFehler während Einlesen von Datei " + small +
                                 L"\nFehler während Einlesen von Datei " + large + L"\n\n"))
        << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(text.ends_with(L"(1/1):\n    c.txt\n    d.txt\n\n" + GetSummary(1, 1))) << LbEncoding::ToUtf8(text);
}

/// Tests sizes just below and above the limits at which the way of reading changes. Each size has two equal files and
/// one that differs in its last byte.
TEST_F(Duplicates, AreFoundInFilesOfAnySize)
{
    constexpr std::size_t c_Piece = 64 * 1024;
    int sets = 0;
    for (const std::size_t size : {std::size_t{1}, std::size_t{17}, 4 * c_Piece - 1, 4 * c_Piece, 4 * c_Piece + 1,
                                   16 * c_Piece - 1, 16 * c_Piece, 16 * c_Piece + 15, 50 * c_Piece})
    {
        const std::wstring name = LbFormat(L"%02d", sets++);
        std::string content(size, '\0');
        for (std::size_t index = 0; index < size; ++index)
        {
            content[index] = static_cast<char>(index * 31 + index / 251);
        }
        Write(name + L" a.txt", content);
        Write(name + L" b.txt", content);
        ++content.back();
        Write(name + L" c.txt", content);
    }

    const std::wstring text = Detect(eDM_List);

    for (int set = 0; set < sets; ++set)
    {
        EXPECT_NE(text.find(LbFormat(L"(%d/%d):\n    %02d a.txt\n    %02d b.txt\n", set + 1, sets, set, set)),
                  std::wstring::npos)
            << set;
    }
    EXPECT_TRUE(text.ends_with(GetSummary(1, sets))) << LbEncoding::ToUtf8(text);
}

TEST_F(Duplicates, AreFoundDespiteUnreadableFiles)
{
    const std::wstring memory = L"/proc/self/mem";
    Write(L"b.txt", "gut");
    Write(L"c.txt", "gut");
    if (!LbFileSystem::IsFile(memory) || !Link(L"a.txt", memory))
    {
        GTEST_SKIP() << "unreadable files cannot be created here";
    }

    const std::wstring text = Detect(eDM_List);

    EXPECT_TRUE(text.starts_with(L"Check: " + GetDirectory() + L"\nFehler während Einlesen von Datei " +
                                 GetDirectory() + L"a.txt\n\n"))
        << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(text.ends_with(GetSummary(1, 1)));
}

TEST_F(Duplicates, DoNotExistAmongNamedCases)
{
    m_folder.WriteFile(L"CPassedModel/x.txt", "gut");
    m_folder.WriteFile(L"CPassedModel/y.txt", "gut");

    EXPECT_TRUE(Detect(eDM_Delete).ends_with(L"\n\n" + GetSummary(1, 0)));
}

TEST_F(Duplicates, ExcludeFilesOfFourGigabytes)
{
    const std::wstring a = Write(L"a.txt", "gut");
    const std::wstring b = Write(L"b.txt", "gut");
    std::filesystem::resize_file(std::filesystem::path(a), 0x100000000);
    std::filesystem::resize_file(std::filesystem::path(b), 0x100000000);

    EXPECT_EQ(Detect(eDM_Delete), GetCheck() + GetSummary(1, 0));
    EXPECT_TRUE(LbFileSystem::IsFile(a));
    EXPECT_TRUE(LbFileSystem::IsFile(b));
}

/// Tests with sparse files whose content does not fit into memory: reading them fails with a message, skipping them is
/// silent.
class DuplicateLengths : public DuplicatesTest
{
protected:
    /// True if the search tries to read a file of that length; empty if memory cannot be limited.
    std::optional<bool> IsRead(std::uint64_t length)
    {
        constexpr std::size_t c_Limit = std::size_t{256} << 20U;
        constexpr int c_Unlimited = 2;
        constexpr int c_Wrong = 3;
        const std::wstring path = Write(L"a.txt", "");
        std::filesystem::resize_file(std::filesystem::path(path), length);
        // The file is only read if another file has the same size.
        std::filesystem::resize_file(std::filesystem::path(Write(L"b.txt", "")), length);
        const std::wstring failure = L"Fehler während Einlesen von Datei " + path + L"\n";
        const std::optional<int> status = LbOs::RunInFork([&] {
            if (!LbOs::LimitMemory(c_Limit))
            {
                return c_Unlimited;
            }
            const std::wstring text = Detect(eDM_List);
            if (!text.ends_with(GetSummary(1, 0)))
            {
                return c_Wrong;
            }
            return text.find(failure) != std::wstring::npos ? 0 : 1;
        });
        EXPECT_TRUE(!status || (*status >= 0 && *status < c_Wrong)) << "status " << *status;
        return !status || status == c_Unlimited ? std::nullopt : std::optional(status == 0);
    }
};

TEST_F(DuplicateLengths, AreLimitedTo32Bits)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers need unlimited address space";
#endif
    const std::optional<bool> isLongestRead = IsRead(0xFFFFFFFF);
    if (!isLongestRead)
    {
        GTEST_SKIP() << "processes cannot fork here, or their memory cannot be limited";
    }

    EXPECT_EQ(isLongestRead, true);
    EXPECT_EQ(IsRead(0x100000000), false);
}

/// Unreadable files cause a line only if they are read.
TEST_F(Duplicates, AreSearchedWithoutReadingFilesOfDifferentSizeOrBeginning)
{
    constexpr std::uint32_t c_Large = 1 << 20;
    const std::wstring alone = Write(L"a.txt", "allein");
    const std::wstring other = Write(L"b.txt", std::string(c_Large, 'x'));
    Write(L"c.txt", std::string(c_Large, 'y'));
    const std::shared_ptr<void> holdAlone = LbOs::HoldBytes(alone, 0, 1);
    const std::shared_ptr<void> holdOther = LbOs::HoldBytes(other, c_Large / 2, 1);
    if (!holdAlone || !holdOther)
    {
        GTEST_SKIP() << "parts of files cannot be locked here";
    }

    EXPECT_EQ(Detect(eDM_List), GetCheck() + GetSummary(1, 0));
}

/// Each file is larger than the available memory.
TEST_F(Duplicates, NeedNoMemoryForFilesThatAreNotRead)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers need unlimited address space";
#endif
    constexpr std::size_t c_MegaByte = 1024 * 1024;
    constexpr int c_Unlimited = 2;
    for (const wchar_t* const name : {L"a.txt", L"b.txt"})
    {
        // The two files of equal size have different first bytes.
        std::filesystem::resize_file(std::filesystem::path(Write(name, LbEncoding::ToUtf8(name))), 80 * c_MegaByte);
    }
    std::filesystem::resize_file(std::filesystem::path(Write(L"c.txt", "x")), 81 * c_MegaByte);

    const std::optional<int> status = LbOs::RunInFork([&] {
        if (!LbOs::LimitMemory(40 * c_MegaByte))
        {
            return c_Unlimited;
        }
        return Detect(eDM_List) == GetCheck() + GetSummary(1, 0) ? 0 : 1;
    });
    if (!status || status == c_Unlimited)
    {
        GTEST_SKIP() << "processes cannot fork here, or their memory cannot be limited";
    }
    EXPECT_EQ(status, 0);
}

/// Lines have the order of the cases, not the order in which files fail.
TEST_F(Duplicates, ReportUnreadableFilesInTheOrderOfCases)
{
    const std::wstring memory = L"/proc/self/mem";
    Write(L"c.txt", "gut");
    if (!LbFileSystem::IsFile(memory) || !Link(L"a.txt", memory) || !LbOs::MakePipe(GetDirectory() + L"b.txt"))
    {
        GTEST_SKIP() << "unreadable files cannot be created here";
    }

    EXPECT_EQ(Detect(eDM_List), L"Check: " + GetDirectory() + L"\nFehler während Einlesen von Datei " + GetDirectory() +
                                    L"a.txt\nFehler während Einlesen von Datei " + GetDirectory() + L"b.txt\n\n" +
                                    GetSummary(1, 0));
}

/// The longest file follows another large one; both together do not fit into memory.
TEST_F(Duplicates, NeedMemoryForTheLongestFileOnly)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers need unlimited address space";
#endif
    constexpr std::size_t c_MegaByte = 1024 * 1024;
    constexpr std::size_t c_Longest = 80 * c_MegaByte;
    constexpr int c_Unlimited = 2;
    int number = 0;
    for (const std::size_t size : {64 * c_MegaByte, c_MegaByte, c_Longest, 72 * c_MegaByte, c_MegaByte, c_Longest})
    {
        const std::wstring path = Write(LbFormat(L"%d.txt", ++number), "x");
        std::filesystem::resize_file(std::filesystem::path(path), size);
    }

    const std::optional<int> status = LbOs::RunInFork([&] {
        if (!LbOs::LimitMemory(c_Longest + 40 * c_MegaByte))
        {
            return c_Unlimited;
        }
        return Detect(eDM_List).ends_with(GetSummary(1, 2)) ? 0 : 1;
    });
    if (!status || status == c_Unlimited)
    {
        GTEST_SKIP() << "processes cannot fork here, or their memory cannot be limited";
    }
    EXPECT_EQ(status, 0);
}

/// Without a working directory, relative paths have no meaning.
TEST_F(Duplicates, RefuseRelativePathsInADeletedWorkingDirectory)
{
    const ScopedFolder parent;
    const std::wstring gone = LbPath::WithoutSeparator(parent.MakeFolder(L"weg"));
    const ScopedWorkingDirectory place(gone);
    if (!LbOs::RemoveEmptyDirectory(gone))
    {
        GTEST_SKIP() << "working directories cannot be removed here";
    }
    for (const wchar_t* const directory : {L".", L"./", L"..", L"weg"})
    {
        LuTestSuiteSetup setup = MakeSetup(directory);
        setup.duplicateMode = eDM_Delete;
        try
        {
            Detect(setup);
            ADD_FAILURE() << "no exception";
        }
        catch (const LbException& exception)
        {
            EXPECT_EQ(exception.GetMessageText(),
                      LbFormat(L"Das Arbeitsverzeichnis für den Pfad %s ist nicht bekannt", directory));
        }
    }
    Write(L"a.txt", "gut");
    Write(L"b.txt", "gut");
    EXPECT_TRUE(Detect(eDM_Delete).ends_with(GetSummary(1, 1)));
}

/// An empty path with a separator would be the root directory.
TEST_F(Duplicates, AreNotSearchedWithoutADataDirectory)
{
    LuTestSuiteSetup setup = MakeSetup(L"");
    setup.duplicateMode = eDM_Delete;

    EXPECT_EQ(Detect(setup), L"\nDurchsuchtes Datenverzeichnis: \n"
                             L"Gefundene Unittest-Klassen: 0\n"
                             L"Redundante Datensätze darin: 0\n");
}

TEST_F(Duplicates, AreFoundDespiteFilesThatAreHeldOpen)
{
    const std::shared_ptr<void> hold = LbOs::HoldFile(Write(L"a.txt", "gut"));
    Write(L"b.txt", "gut");
    Write(L"c.txt", "gut");
    if (!hold)
    {
        GTEST_SKIP() << "files cannot be opened exclusively here";
    }

    const std::wstring text = Detect(eDM_Delete);

    EXPECT_TRUE(text.starts_with(L"Check: " + GetDirectory() + L"\nFehler während Einlesen von Datei " +
                                 GetDirectory() + L"a.txt\n\n"))
        << LbEncoding::ToUtf8(text);
    EXPECT_NE(text.find(L"    b.txt... [KEEP]\n    c.txt... [DELETED]\n"), std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(text.ends_with(GetSummary(1, 1)));
}

} // namespace

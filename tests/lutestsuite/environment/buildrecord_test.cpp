#include "testing/lutestsuite/environment/buildrecord.h"

#include <gtest/gtest.h>

#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuite::FindPscmRecord;
using LuTestSuite::ReadPscmRecord;
using LuTestSuite::ReadSvnRecord;

TEST(BuildRecord, IsAbsentWithoutText)
{
    EXPECT_EQ(ReadSvnRecord(""), nullptr);
    EXPECT_EQ(ReadPscmRecord(""), nullptr);
}

TEST(BuildRecord, ReadsEveryFieldOfSvn)
{
    const auto record = ReadSvnRecord("Path: a\nWorking Copy Root Path: b\nURL: c\nRepository Root: d\nRevision: e\n"
                                      "Last Changed Author: f\nLast Changed Rev: g\nLast Changed Date: h");

    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->Path, L"a");
    EXPECT_EQ(record->WorkingCopyRootPath, L"b");
    EXPECT_EQ(record->URL, L"c");
    EXPECT_EQ(record->RepositoryRoot, L"d");
    EXPECT_EQ(record->Revision, L"e");
    EXPECT_EQ(record->LastChangedAuthor, L"f");
    EXPECT_EQ(record->LastChangedRev, L"g");
    EXPECT_EQ(record->LastChangedDate, L"h");
}

TEST(BuildRecord, ReadsEveryFieldOfPscm)
{
    const auto record = ReadPscmRecord("WorkspacePath:a\nServer:b\nRepository:c\nChangeset:d\nBranch:e\n"
                                       "ChangesetAuthor:f\n");

    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->WorkspacePath, L"a");
    EXPECT_EQ(record->Server, L"b");
    EXPECT_EQ(record->Repository, L"c");
    EXPECT_EQ(record->Changeset, L"d");
    EXPECT_EQ(record->Branch, L"e");
    EXPECT_EQ(record->ChangesetAuthor, L"f");
}

TEST(BuildRecord, KeepsColonsOfValuesAndDropsTheWhiteSpaceAroundThem)
{
    EXPECT_EQ(ReadSvnRecord("Last Changed Date: \t 2024-02-29 12:34:56 +0100 \r\n")->LastChangedDate,
              L"2024-02-29 12:34:56 +0100");
    EXPECT_EQ(ReadSvnRecord("URL: \t\r\n")->URL, L"");
}

TEST(BuildRecord, ComparesKeysExactly)
{
    const auto record = ReadPscmRecord(" Server: a\nserver: b\nServer : c\nServers: d\nkein Doppelpunkt\n\n");
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->Server, L"");
}

TEST(BuildRecord, UsesTheLastOfEqualKeys)
{
    EXPECT_EQ(ReadPscmRecord("Branch: a\nBranch: b\n")->Branch, L"b");
}

TEST(BuildRecord, ReadsUtf8AndLatin1)
{
    EXPECT_EQ(ReadPscmRecord("ChangesetAuthor: J\xC3\xB6rg")->ChangesetAuthor, L"Jörg");
    EXPECT_EQ(ReadPscmRecord("ChangesetAuthor: J\xF6rg")->ChangesetAuthor, L"Jörg");
}

TEST(BuildRecord, OfThisBuildIsAPscmRecord)
{
    EXPECT_EQ(LuTestSuiteUtils::GetSvnInfo(), nullptr);
    EXPECT_NE(LuTestSuiteUtils::GetPscmInfo(), nullptr);
    EXPECT_TRUE(LuTestSuiteUtils::LoadResourceToString(L"IDR_PSCMINFO", L"PSCMINFOFILE").starts_with("WorkspacePath:"));
}

TEST(BuildRecord, OfAProductIsReadFromTheFileBesideItsHosts)
{
    const ScopedFolder folder;
    EXPECT_EQ(FindPscmRecord(folder.GetPath(), "Branch: own")->Branch, L"own");

    folder.WriteFile(LuTestSuite::c_BuildRecordFile, "Branch: product\n");
    EXPECT_EQ(FindPscmRecord(folder.GetPath(), "Branch: own")->Branch, L"product");
}

TEST(BuildRecord, OfAProductWithAnEmptyFileIsAbsent)
{
    const ScopedFolder folder;
    folder.WriteFile(LuTestSuite::c_BuildRecordFile, "");

    EXPECT_EQ(FindPscmRecord(folder.GetPath(), "Branch: own"), nullptr);
}

} // namespace

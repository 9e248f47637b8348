#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/runtest.h"
#include "tests/support/scopedenvironment.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/scopedworkingdirectory.h"

namespace
{

class QueryMode : public RunTest
{
protected:
    std::wstring Query(const LuTestSuiteSetup& setup)
    {
        LuTestSuiteUtils::RunQueryMode(setup, m_environment);
        return m_output.GetText();
    }

    std::wstring Query() { return Query(MakeSetup(m_folder.GetPath())); }

    /// The text after the selection.
    static std::wstring GetSummary(const std::wstring& dataDir, const wchar_t* classes, const wchar_t* cases)
    {
        return LbFormat(L"Datenverzeichnis: %s\nAusgewählte/Gefundene Klassen: %s\nAusgewählte/Gefundene Fälle: %s\n",
                        dataDir, classes, cases);
    }

    ScopedUserFolder m_user;
    ScopedFolder m_folder;
};

TEST_F(QueryMode, ListsTheCasesOfEachUnitTest)
{
    const std::wstring directory = m_folder.MakeFolder(L"CPassedModel");

    EXPECT_EQ(Query(),
              directory + L"\n    eins\n    zwei mit Lücke\n\n" + GetSummary(m_folder.GetPath(), L"1/1", L"2/2"));
}

TEST_F(QueryMode, RunsNothing)
{
    m_folder.MakeFolder(L"CFailedModel");

    EXPECT_EQ(Query().find(L"FEHLER"), std::wstring::npos);
}

TEST_F(QueryMode, PrintsEachLineSeparatelyAndPlain)
{
    m_folder.MakeFolder(L"CFailedModel");
    Query();

    for (const CapturedOutput::SLine& line : m_output.GetLines())
    {
        EXPECT_EQ(line, CapturedOutput::Plain(line.text));
        EXPECT_EQ(line.text.find(L'\n'), line.text.size() - 1);
    }
}

TEST_F(QueryMode, CountsSelectedAndFoundCases)
{
    const std::wstring directory = m_folder.MakeFolder(L"a/CPassedModel");
    m_folder.WriteFile(L"b/CDataSetModel/x.txt", "gut");
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
    setup.includes = {L"CPassedModel:eins"};

    EXPECT_EQ(Query(setup), directory + L"\n    eins\n\n" + GetSummary(m_folder.GetPath(), L"1/2", L"1/3"));
}

TEST_F(QueryMode, StopsAtTheCaseMaximum)
{
    m_folder.MakeFolder(L"CPassedModel");
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
    setup.params.testCaseMax = 1;

    EXPECT_TRUE(Query(setup).ends_with(GetSummary(m_folder.GetPath(), L"1/1", L"1/2")));
}

TEST_F(QueryMode, ReportsAnEmptySelection)
{
    m_folder.MakeFolder(L"CPassedModel");
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
    setup.excludes = {L"."};

    EXPECT_EQ(Query(setup), GetSummary(m_folder.GetPath(), L"0/1", L"0/2"));
}

TEST_F(QueryMode, ReportsADirectoryWithoutUnitTests)
{
    EXPECT_EQ(Query(), GetSummary(m_folder.GetPath(), L"0/0", L"0/0"));
}

TEST_F(QueryMode, DoesNotCountDisabledCases)
{
    m_folder.MakeFolder(L"CPassedModel");
    m_folder.WriteFile(L"CPassedModel/#ExtraInfo.xml",
                       "<ExtraInfo><TestCase name=\"eins\"><Enable>false</Enable></TestCase></ExtraInfo>");

    const std::wstring text = Query();

    EXPECT_EQ(text.find(L"eins"), std::wstring::npos);
    EXPECT_TRUE(text.ends_with(GetSummary(m_folder.GetPath(), L"1/1", L"1/1")));
}

TEST_F(QueryMode, ShowsTheDataDirectoryAsGivenAndFullPathsOfUnitTests)
{
    const std::wstring directory = m_folder.MakeFolder(L"daten/CFailedModel");
    const ScopedWorkingDirectory here(m_folder.GetPath());
    const std::wstring relative = LbPath::ToNative(L"daten/");

    const std::wstring text = Query(MakeSetup(relative));

    EXPECT_TRUE(text.starts_with(directory + L"\n")) << LbEncoding::ToUtf8(text);
    EXPECT_NE(text.find(L"Datenverzeichnis: " + relative + L"\n"), std::wstring::npos);
}

TEST_F(QueryMode, DoesNotChangeTheWorkingDirectory)
{
    const ScopedWorkingDirectory here(m_folder.GetPath());
    const std::wstring before = LbOs::GetWorkingDirectory();
    Query();

    EXPECT_EQ(LbOs::GetWorkingDirectory(), before);
}

TEST_F(QueryMode, PassesOnTheExceptionOfAnInvalidPattern)
{
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
    m_folder.MakeFolder(L"CPassedModel");
    setup.includes = {L"["};

    EXPECT_THROW(Query(setup), std::wstring);
}

TEST_F(QueryMode, ListsRememberedDirectoriesIfNoneIsGiven)
{
    m_user.WriteLastConfig("<Config><DataDirHistory><Dir path=\"neu\"/><Dir path=\"mit L\xC3\xBC"
                           "cke\"/></DataDirHistory></Config>");

    EXPECT_EQ(Query(MakeSetup(L"")), L"Datenverzeichnisse in LastConfig.xml:\n    0: neu\n    1: mit Lücke\n");
}

TEST_F(QueryMode, PrintsNothingWithoutADataDirectoryAndAHistory)
{
    EXPECT_EQ(Query(MakeSetup(L"")), L"");
}

TEST_F(QueryMode, PrintsNothingForAnEmptyHistory)
{
    m_user.WriteLastConfig("<Config><DataDirHistory/></Config>");

    EXPECT_EQ(Query(MakeSetup(L"")), L"");
}

} // namespace

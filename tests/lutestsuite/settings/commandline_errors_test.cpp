// Command lines that are refused.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/os/platform.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/fields.h"
#include "tests/support/scopedenvironment.h"
#include "tests/support/scopedfolder.h"

namespace
{

using testing::ElementsAre;
using testing::SizeIs;
using Arguments = std::vector<const wchar_t*>;

CapturedOutput::SLine ErrorLine(const std::wstring& text)
{
    return CapturedOutput::BoldColored(text, LuColor::c_GOLDENROD);
}

class CommandLineErrors : public testing::Test
{
protected:
    /// Processes these arguments after the program's name; expects that they are refused.
    void Refuse(Arguments arguments)
    {
        arguments.insert(arguments.begin(), L"LuTestSuiteCLI");
        EXPECT_FALSE(
            LuTestSuiteUtils::ProcessCommandLine(m_setup, static_cast<int>(arguments.size()), arguments.data()));
    }

    LuTestSuiteSetup m_setup;
    CapturedOutput m_output;
};

class CommandLineUnknownOption : public CommandLineErrors, public testing::WithParamInterface<const wchar_t*>
{
};

TEST_P(CommandLineUnknownOption, IsNamed)
{
    Refuse({GetParam(), L"wert"});

    EXPECT_THAT(m_output.GetLines(),
                ElementsAre(ErrorLine(L"Fehler: Unbekannte Option " + std::wstring(GetParam()) + L"\n")));
}

// Includes the option that only the help text shows, values in the same argument, other letter cases, and names that
// are longer or shorter than an option.
INSTANTIATE_TEST_SUITE_P(All, CommandLineUnknownOption,
                         testing::Values(L"--unbekannt", L"-", L"--", L"-z", L"--message-output-max", L"--xml=a.xml",
                                         L"--data-dir=daten", L"-d=daten", L"-ddaten", L"-D", L"--Data-Dir", L"-V",
                                         L"--data-dirs", L"--data", L"-xs", L"--verbose ", L"-t30", L"--größe"));

class CommandLineMissingValue : public CommandLineErrors, public testing::WithParamInterface<const wchar_t*>
{
protected:
    void ExpectMissingValue(const Arguments& arguments)
    {
        m_output.Clear();
        Refuse(arguments);
        EXPECT_THAT(m_output.GetLines(), ElementsAre(ErrorLine(L"Fehler: Option " + std::wstring(GetParam()) +
                                                               L" erwartet zusätzlichen Wert\n")));
        EXPECT_THAT(GetChangedFields(m_setup), testing::IsEmpty());
    }
};

TEST_P(CommandLineMissingValue, IsReportedAtTheEnd)
{
    ExpectMissingValue({GetParam()});
}

TEST_P(CommandLineMissingValue, IsReportedBeforeAnotherOption)
{
    ExpectMissingValue({GetParam(), L"-v"});
}

TEST_P(CommandLineMissingValue, IsReportedBeforeAnEmptyArgument)
{
    ExpectMissingValue({GetParam(), L"", L"wert"});
}

TEST_P(CommandLineMissingValue, IsReportedBeforeANegativeNumber)
{
    ExpectMissingValue({GetParam(), L"-1"});
}

INSTANTIATE_TEST_SUITE_P(All, CommandLineMissingValue,
                         testing::Values(L"-d", L"--data-dir", L"-i", L"--include", L"-e", L"--exclude",
                                         L"--include-config", L"--break-alloc-id", L"--break-alloc-size", L"-t",
                                         L"--time-out-sec", L"-r", L"--repetitions", L"-w", L"--worker-threads", L"-c",
                                         L"--test-case-max", L"--message-report-max", L"--archive-run", L"--xml",
                                         L"--diff-in", L"--diff-out", L"--html", L"--dll", L"--memory-id",
                                         L"--request-event-id", L"--response-event-id"));

TEST_F(CommandLineErrors, KeepTheOptionsBeforeThem)
{
    Refuse({L"-v", L"-i", L"muster", L"--unbekannt", L"-x"});

    EXPECT_THAT(GetChangedFields(m_setup), ElementsAre("includes[]=muster", "verbose=true"));
}

TEST_F(CommandLineErrors, EndParsingAtTheFirstError)
{
    Refuse({L"--erste", L"--zweite", L"-d"});

    EXPECT_EQ(m_output.GetText(), L"Fehler: Unbekannte Option --erste\n");
}

TEST_F(CommandLineErrors, ListAllStrayArgumentsAfterParsing)
{
    Refuse({L"eins", L"-v", L"zwei drei", L"-x", L"/q"});

    EXPECT_THAT(m_output.GetLines(), ElementsAre(ErrorLine(L"Fehler: Unbekannte Argumente\n"), ErrorLine(L"  eins\n"),
                                                 ErrorLine(L"  zwei drei\n"), ErrorLine(L"  /q\n")));
    EXPECT_THAT(GetChangedFields(m_setup), ElementsAre("external=true", "verbose=true"));
}

TEST_F(CommandLineErrors, TreatTheArgumentAfterAFlagAsStray)
{
    Refuse({L"--track-heap", L"1"});

    EXPECT_EQ(m_output.GetText(), L"Fehler: Unbekannte Argumente\n  1\n");
}

TEST_F(CommandLineErrors, LeaveStrayArgumentsUnreportedWhenParsingFails)
{
    Refuse({L"eins", L"--unbekannt", L"zwei"});

    EXPECT_EQ(m_output.GetText(), L"Fehler: Unbekannte Option --unbekannt\n");
}

TEST_F(CommandLineErrors, ReportStrayArgumentsBeforeAMissingDataDirectory)
{
    Refuse({L"-d", L"gibt es nicht", L"eins"});

    EXPECT_EQ(m_output.GetText(), L"Fehler: Unbekannte Argumente\n  eins\n");
}

TEST_F(CommandLineErrors, TakePrecedenceOverTheRequestForHelp)
{
    Refuse({L"-h", L"--unbekannt"});

    EXPECT_EQ(m_output.GetText(), L"Fehler: Unbekannte Option --unbekannt\n");
}

TEST_F(CommandLineErrors, NameAMissingDataDirectoryWithSeparator)
{
    const ScopedFolder folder;
    const std::wstring missing = folder.GetPathOf(L"gibt es nicht");

    Refuse({L"-d", missing.c_str()});

    EXPECT_THAT(m_output.GetLines(),
                ElementsAre(ErrorLine(L"Fehler: Datenverzeichnis '" + missing + LbOs::c_PathSeparator +
                                      L"' konnte nicht gefunden werden\n")));
}

TEST_F(CommandLineErrors, NameARememberedDataDirectoryThatIsGone)
{
    const ScopedUserFolder user;
    const std::wstring separator(1, LbOs::c_PathSeparator);
    user.WriteLastConfig("<Config><DataDirHistory><Dir path=\"weg\"/></DataDirHistory></Config>");

    Refuse({L"-d", L"0"});

    EXPECT_EQ(m_output.GetText(), L"Fehler: Datenverzeichnis 'weg" + separator + L"' konnte nicht gefunden werden\n");
}

TEST_F(CommandLineErrors, RefuseAFileAsDataDirectory)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(L"datei", "");

    Refuse({L"-d", file.c_str()});

    ASSERT_THAT(m_output.GetLines(), SizeIs(1));
    EXPECT_TRUE(m_output.GetText().starts_with(L"Fehler: Datenverzeichnis '" + file));
}

TEST_F(CommandLineErrors, ReportAMissingDataDirectoryInQueryMode)
{
    const ScopedFolder folder;
    const std::wstring missing = folder.GetPathOf(L"gibt es nicht");

    Refuse({L"-q", L"-d", missing.c_str()});

    EXPECT_THAT(m_output.GetLines(), SizeIs(1));
}

} // namespace

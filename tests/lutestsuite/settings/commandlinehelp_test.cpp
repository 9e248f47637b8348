// The help text and when it is shown.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/fields.h"
#include "tests/support/golden.h"
#include "tests/support/scopedfolder.h"

namespace
{

using testing::ElementsAre;
using Arguments = std::vector<const wchar_t*>;

class CommandLineHelp : public testing::Test
{
protected:
    /// Expects that these arguments print only the help text, as one plain line of output.
    void ExpectHelp(Arguments arguments)
    {
        arguments.insert(arguments.begin(), L"LuTestSuiteCLI");
        m_output.Clear();
        EXPECT_TRUE(
            LuTestSuiteUtils::ProcessCommandLine(m_setup, static_cast<int>(arguments.size()), arguments.data()));
        EXPECT_THAT(m_output.GetLines(), ElementsAre(CapturedOutput::Plain(LuTestSuiteUtils::GetCommandLineHelp())));
    }

    LuTestSuiteSetup m_setup;
    CapturedOutput m_output;
};

TEST_F(CommandLineHelp, IsTheApprovedTextByteForByte)
{
    ExpectGolden("help.txt", LbEncoding::ToUtf8(LuTestSuiteUtils::GetCommandLineHelp()));
}

TEST_F(CommandLineHelp, IsShownWithoutArguments)
{
    ExpectHelp({});
    EXPECT_THAT(GetChangedFields(m_setup), testing::IsEmpty());
}

TEST_F(CommandLineHelp, IsShownWithoutAnyProgramName)
{
    EXPECT_TRUE(LuTestSuiteUtils::ProcessCommandLine(m_setup, 0, nullptr));

    EXPECT_EQ(m_output.GetText(), LuTestSuiteUtils::GetCommandLineHelp());
}

TEST_F(CommandLineHelp, IsShownOnRequestUnderBothNames)
{
    ExpectHelp({L"-h"});
    ExpectHelp({L"--help"});
}

TEST_F(CommandLineHelp, IsShownOnceDespiteOtherOptions)
{
    ExpectHelp({L"-v", L"-h", L"-x", L"--help"});
    EXPECT_THAT(GetChangedFields(m_setup), ElementsAre("external=true", "verbose=true"));
}

TEST_F(CommandLineHelp, TakesPrecedenceOverStrayArguments)
{
    ExpectHelp({L"eins", L"-h", L"zwei"});
}

TEST_F(CommandLineHelp, TakesPrecedenceOverADataDirectory)
{
    const ScopedFolder folder;

    ExpectHelp({L"-h", L"-d", folder.GetPath().c_str()});
    EXPECT_EQ(m_setup.dataDir, L"");
}

TEST_F(CommandLineHelp, TakesPrecedenceOverAMissingDataDirectory)
{
    ExpectHelp({L"-d", L"gibt es nicht", L"-h"});
    EXPECT_EQ(m_setup.dataDir, L"");
}

TEST_F(CommandLineHelp, TakesPrecedenceOverEveryMode)
{
    ExpectHelp(
        {L"-h", L"-q", L"--archive-run", L"nacht", L"--diff-in", L"a.xml", L"--list-disabled", L"--delete-duplicates"});
    EXPECT_THAT(GetChangedFields(m_setup), testing::IsEmpty());
}

TEST_F(CommandLineHelp, IsShownWithoutAMode)
{
    ExpectHelp({L"-v"});
    ExpectHelp({L"-i", L"muster"});
    ExpectHelp({L"--list-duplicates"});
    ExpectHelp({L"--list-disabled"});
    ExpectHelp({L"--diff-out", L"a.html"});
}

} // namespace

// The host's output on a terminal.

#include <string>

#include <gtest/gtest.h>

#include "tests/support/golden.h"
#include "tests/support/hostprocess.h"
#include "tests/support/scopedfolder.h"

namespace
{

class HostTerminal : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!CanRunHostOnTerminal())
        {
            GTEST_SKIP() << "programs cannot run on a terminal here (needs script of util-linux)";
        }
        m_folder.MakeFolder(L"CPassedModel");
        m_folder.MakeFolder(L"weiter/CFailedModel");
    }

    /// What the terminal receives for a run of three cases. Terminals add a carriage return before each line feed.
    std::string Show(const std::wstring& terminal, const std::wstring& noColor) const
    {
        SHostOptions options;
        options.onTerminal = true;
        options.variables = {{L"TERM", terminal}, {L"NO_COLOR", noColor}};
        const SHostRun run = RunHost({L"-d", m_folder.GetPath(), L"--dll", L"resultmodels"}, options);
        EXPECT_EQ(run.exitStatus, 1);
        std::string text = run.output;
        std::erase(text, '\r');
        return text;
    }

    ScopedFolder m_folder;
};

TEST_F(HostTerminal, ShowsColoursAndBoldText)
{
    ExpectGolden("cli/terminal.txt", Show(L"xterm-256color", L""));
}

TEST_F(HostTerminal, ShowsPlainTextWhenColoursAreUnwanted)
{
    ExpectGolden("cli/terminal_plain.txt", Show(L"xterm-256color", L"1"));
}

TEST_F(HostTerminal, ShowsPlainTextOnATerminalWithoutColours)
{
    ExpectGolden("cli/terminal_plain.txt", Show(L"dumb", L""));
}

TEST_F(HostTerminal, ShowsCommandLineErrorsBoldAndGoldenrod)
{
    SHostOptions options;
    options.onTerminal = true;
    options.variables = {{L"TERM", L"xterm"}, {L"NO_COLOR", L""}};

    const SHostRun run = RunHost({L"--gibt-es-nicht"}, options);

    EXPECT_EQ(run.output, "\x1b[1m\x1b[38;2;218;165;32mFehler: Unbekannte Option --gibt-es-nicht\x1b[0m\r\n");
    EXPECT_EQ(run.exitStatus, 1);
}

} // namespace

#include "testing/lutestsuiterunner/console/terminal.h"

#include <gtest/gtest.h>

namespace
{

TEST(RunnerTerminal, ShowsControlCharactersAsPictures)
{
    EXPECT_EQ(Runner::ShowControls(L"a\x1b[2Jb\r\n\x7f"), L"a\u241b[2Jb\u240d\u240a\u2421");
}

TEST(RunnerTerminal, ReplacesControlCharactersWithoutAPicture)
{
    EXPECT_EQ(Runner::ShowControls(L"\u009b2J"), L"\ufffd2J");
}

TEST(RunnerTerminal, KeepsLinesWhereTheyAreWanted)
{
    EXPECT_EQ(Runner::ShowControls(L"\tä\n\x1b", L"\n\t"), L"\tä\n\u241b");
}

} // namespace

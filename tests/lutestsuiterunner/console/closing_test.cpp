#include "testing/lutestsuiterunner/console/closing.h"

#include <gtest/gtest.h>

#include "base/lbpath.h"

namespace
{

TEST(RunnerClosing, QuotesArgumentsForTheShellOfThePlatform)
{
    const bool isWindows = LbPath::c_Separator == L'\\';

    EXPECT_EQ(Runner::QuoteForShell(L"--out=a/b.txt"), L"--out=a/b.txt");
    EXPECT_EQ(Runner::QuoteForShell(L""), isWindows ? L"\"\"" : L"''");
    EXPECT_EQ(Runner::QuoteForShell(L"mit Lücke"), isWindows ? L"\"mit Lücke\"" : L"'mit Lücke'");
    EXPECT_EQ(Runner::QuoteForShell(L":fall$"), isWindows ? L"\":fall$\"" : L"':fall$'");
    EXPECT_EQ(Runner::QuoteForShell(L"C:\\x"), isWindows ? L"C:\\x" : L"'C:\\x'");
    EXPECT_EQ(Runner::QuoteForShell(L"it's"), isWindows ? L"\"it's\"" : L"'it'\\''s'");
}

} // namespace

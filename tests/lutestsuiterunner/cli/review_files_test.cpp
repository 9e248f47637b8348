/// The option --files.
#include <string>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "tests/lutestsuiterunner/cli/reviewtest.h"

namespace
{

TEST_F(RunnerReview, ListsTheFilesOfChanges)
{
    for (const wchar_t* const name : {L"a", L"b", L"c"})
    {
        Write(name, "x\nalt\n");
        Receive(name, "x\nneu\n");
    }
    Write(L"d", "x\nandere\n");
    Receive(L"d", "x\nzweite\n");
    const std::string listing = FromPlatformLines(Review().output);
    const std::string first = listing.substr(0, 6);
    const std::string second = listing.substr(listing.find("  1 Datei: d") - 6, 6);
    const std::wstring ofFirst = L"--files=" + LbEncoding::FromUtf8(first);

    const SHostRun all = Review({L"--files"});
    EXPECT_EQ(FromPlatformLines(all.output), first + "  a\n" + first + "  b\n" + first + "  c\n" + second + "  d\n");
    EXPECT_EQ(all.exitStatus, 0);
    EXPECT_EQ(FromPlatformLines(Review({ofFirst}).output), "a\nb\nc\n");
    ExpectLine(Review({L"--diff"}).output, ": a, ...\n  a\n  b\n  c\na:\n  ab Zeile 2\n");
    EXPECT_EQ(Review({ofFirst, L"--ci"}).exitStatus, 1);
}

TEST_F(RunnerReview, RefusesToListTheFilesOfAnUnknownChange)
{
    Write(L"a", "alt\n");
    Receive(L"a", "neu\n");

    const SHostRun unknown = Review({L"--files=ABCDEFABCDEF"});
    EXPECT_EQ(unknown.exitStatus, 2);
    ExpectLine(unknown.errors, "'ABCDEFABCDEF' ist keine Änderung\n");
    ExpectLine(Review({L"--files", L"--diff"}).errors, "'--files' listet nur Namen");
    ExpectLine(RunRunner({L"review", L"--files", L"4C21F0"}).errors, "; ein Wert von '--files' steht hinter '='\n");
}

TEST_F(RunnerReview, RefusesToShowAndDecideInOneCall)
{
    Write(L"a", "alt\n");
    Receive(L"a", "neu\n");

    for (const wchar_t* const shows : {L"--files", L"--diff", L"--side-by-side"})
    {
        for (const wchar_t* const decides : {L"--accept", L"--reject"})
        {
            const SHostRun run = Review({shows, decides, L"all"});
            EXPECT_EQ(run.exitStatus, 2);
            ExpectLine(run.errors, "'--diff', '--side-by-side' und '--files' entscheiden nichts: ohne '--accept' und "
                                   "'--reject' angeben\n");
        }
    }
    ExpectLine(Review().output, "Änderungen: 1, Dateien: 1\n");
}

} // namespace

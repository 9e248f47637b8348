#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbreceivedfile.h"
#include "tests/lutestsuiterunner/cli/reviewtest.h"
#include "tests/support/places.h"

namespace
{

TEST_F(RunnerReview, ShowsNoChangesWithoutDifferences)
{
    const SHostRun run = Review();

    ExpectLine(run.output, "Änderungen: 0, Dateien: 0\n");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(RunnerReview, ShowsEqualChangesOnce)
{
    for (int number = 0; number < 20; ++number)
    {
        const std::wstring name = LbFormat(L"CFall/%02d.txt", number);
        const std::string own = std::to_string(number) + "\n";
        Write(name, own + "alt\n");
        Receive(name, own + (number % 2 == 0 ? "neu\n" : "anders\n"));
    }

    const SHostRun run = Review();

    ExpectLine(run.output, "Änderungen: 2, Dateien: 20\n");
    ExpectLine(run.output, "  10 Dateien: CFall");
    ExpectLine(run.output, "    -alt\n    +neu\n");
    EXPECT_EQ(run.output.find('\x1b'), std::string::npos);
}

TEST_F(RunnerReview, TreatsLinesThatDifferOnlyInValuesAsOneChange)
{
    for (const std::string name : {"a", "b", "c"})
    {
        const std::string line = "Summe " + std::to_string(name.front() * 7);
        Write(LbEncoding::FromUtf8(name), line + "\nEnde\n");
        Receive(LbEncoding::FromUtf8(name), line + " EUR\nEnde\n");
    }
    const std::string output = FromPlatformLines(Review().output);

    ExpectLine(output, "  3 Dateien, Zeilen mit verschiedenen Werten: a, ...\n    -Summe 679\n    +Summe 679 EUR\n");
    const SHostRun run = Review({L"--accept", LbEncoding::FromUtf8(output.substr(0, output.find(' ')))});

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    EXPECT_EQ(FromPlatformLines(Read(L"a") + Read(L"b") + Read(L"c")),
              "Summe 679 EUR\nEnde\nSumme 686 EUR\nEnde\nSumme 693 EUR\nEnde\n");
}

TEST_F(RunnerReview, FitsBothSidesToTheWidthOfTheTerminal)
{
    if (!CanRunHostOnTerminal())
    {
        GTEST_SKIP() << "programs cannot run on a terminal here (install the script command of util-linux)";
    }
    Write(L"a", "x\nalt\n");
    Receive(L"a", "x\nneu\n");
    SHostOptions options;
    options.onTerminal = true;
    options.variables = {{L"TERM", L"xterm"}, {L"NO_COLOR", L"1"}};
    options.program = L"/bin/sh";
    const std::wstring review = L"" LUTESTSUITE_RUNNER L" review " + m_folder.GetPathOf(L"data");

    const SHostRun run = RunHost(
        {L"-c", L"stty cols 64; exec " + review + L" --side-by-side 2>" + m_folder.GetPathOf(L"errors")}, options);

    EXPECT_NE(run.output.find("\nalt" + std::string(27, ' ') + " | neu"), std::string::npos) << run.output;
}

TEST_F(RunnerReview, ShowsDifferencesAsDiffAndSideBySide)
{
    Write(L"a", "eins\nalt\n");
    Receive(L"a", "eins\nneu\n");

    ExpectLine(Review({L"--diff"}).output, "  ab Zeile 2\n    -alt\n    +neu\n");
    ExpectLine(Review({L"--side-by-side"}).output, "| neu\n");
}

TEST_F(RunnerReview, ShowsTheDifferencesOfANamedFile)
{
    Write(L"a", "x\nalt\n");
    Receive(L"a", "x\nneu\n");
    Write(L"b", "x\ny\nalt\n");
    Receive(L"b", "x\ny\nneu\n");

    const SHostRun run = Review({L"--diff=" + m_folder.GetPathOf(L"data/b")});

    ExpectLine(run.output, "b:\n  ab Zeile 3\n    -alt\n    +neu\nÄnderungen: 1, Dateien: 1\n");
    EXPECT_EQ(Review({L"--diff=fehlt"}).exitStatus, 2);
    ExpectLine(Review({L"--side-by-side=b"}).output, " | neu\nÄnderungen: 1, Dateien: 1\n");
    ExpectLine(Review({L"--diff=b", L"--side-by-side"}).output, " | neu\nÄnderungen: 1, Dateien: 1\n");
    ExpectLine(Review({L"--diff=b", L"--side-by-side=a"}).errors, "nennen verschiedene Dateien");
}

TEST_F(RunnerReview, ShowsChangesThatShareAFileOnce)
{
    Write(L"a", "eins\nx\n");
    Receive(L"a", "EINS\nx\n");
    Write(L"b", "zwei\nx\n");
    Receive(L"b", "ZWEI\nx\n");
    Write(L"c", "eins\nzwei\nx\n");
    Receive(L"c", "EINS\nZWEI\nx\n");

    ExpectLine(Review().output, "Änderungen: 2, Dateien: 3\n");
    const SHostRun run = Review({L"--accept", L"all"});

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    EXPECT_EQ(Read(L"c"), "EINS\nZWEI\nx\n");
    ExpectLine(Review().output, "Änderungen: 0, Dateien: 0\n");
}

TEST_F(RunnerReview, AcceptsAllChanges)
{
    Write(L"a", "alt");
    Receive(L"a", "neu");
    Receive(L"b", "dazu");

    const SHostRun run = Review({L"--accept", L"all"});

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    ExpectLine(run.output, "Übernommen: ");
    EXPECT_EQ(Read(L"a"), "neu");
    EXPECT_EQ(Read(L"b"), "dazu");
    ExpectLine(Review().output, "Änderungen: 0, Dateien: 0\n");
}

TEST_F(RunnerReview, AcceptsNewLineEndsOnlyAfterShowingThem)
{
    Write(L"a", "Summe alt\nEnde\n");
    Receive(L"a", "Summe neu\r\nEnde\r\n");

    EXPECT_EQ(Review({L"--accept", L"all"}).exitStatus, 0);
    EXPECT_EQ(Read(L"a"), "Summe neu\nEnde\n");

    ExpectLine(Review({L"--diff"}).output, "    -Ende\n    +Summe neu␍\n    +Ende␍\n");
    EXPECT_EQ(Review({L"--accept", L"all"}).exitStatus, 0);
    EXPECT_EQ(Read(L"a"), "Summe neu\r\nEnde\r\n");
    EXPECT_FALSE(Holds(L"a.received"));
}

TEST_F(RunnerReview, AcceptsOneChangeByItsName)
{
    Write(L"a", "alt");
    Receive(L"a", "neu");
    Write(L"b", "alt");
    Receive(L"b", "neu");
    Write(L"c", "alt");
    Receive(L"c", "anders");
    const std::string output = FromPlatformLines(Review().output);
    const std::string name = output.substr(0, output.find(' '));

    Review({L"--accept", std::wstring(name.begin(), name.end())});

    EXPECT_EQ(Read(L"a"), "neu");
    EXPECT_EQ(Read(L"b"), "neu");
    EXPECT_EQ(Read(L"c"), "alt");
}

TEST_F(RunnerReview, RefusesNewReferencesThatHaveChangedSinceTheyWereListed)
{
    m_folder.MakeFolder(L"data/CTest");
    Receive(L"CTest/a", "gezeigt");
    const std::string output = FromPlatformLines(Review().output);
    const std::wstring name = LbEncoding::FromUtf8(output.substr(0, output.find(' ')));
    Receive(L"CTest/a", "anders");

    const SHostRun run = Review({L"--accept", name});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "ist weder 'all' noch eine Änderung");
    EXPECT_FALSE(Holds(L"CTest/a"));
}

TEST_F(RunnerReview, AcceptsPathsAsItPrintsThem)
{
    Write(L"CTest/a", "alt\n");
    Receive(L"CTest/a", "neu\n");
    const std::string output = FromPlatformLines(Review({L"--diff"}).output);
    const std::size_t begin = output.find("Datei: ") + 7;
    const std::wstring path = LbEncoding::FromUtf8(output.substr(begin, output.find('\n') - begin));

    ExpectLine(Review({L"--diff=" + path}).output, "Änderungen: 1, Dateien: 1\n");
    const SHostRun run = Review({L"--accept", path});

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    EXPECT_EQ(Read(L"CTest/a"), "neu\n");
}

TEST_F(RunnerReview, AcceptsAndRejectsSingleFiles)
{
    for (const wchar_t* name : {L"a", L"b", L"c"})
    {
        Write(name, "alt");
        Receive(name, "neu");
    }

    Review({L"--accept", m_folder.GetPathOf(L"data/a"), L"--reject", m_folder.GetPathOf(L"data/b.received")});

    EXPECT_EQ(Read(L"a"), "neu");
    EXPECT_EQ(Read(L"b"), "alt");
    EXPECT_FALSE(Holds(L"b.received"));
    EXPECT_TRUE(Holds(L"c.received"));
}

TEST_F(RunnerReview, RefusesUnknownNames)
{
    const SHostRun run = Review({L"--accept", L"fehlt"});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "Fehler: 'fehlt' ist weder 'all'");
}

TEST_F(RunnerReview, AcceptsOutputOnlyIfThreeRunsProducedIt)
{
    Write(L"a", "alt");
    Receive(L"a", "neu", 2);
    Write(L"b", "alt");
    Receive(L"b", "neu", 3);

    const SHostRun refused = Review({L"--accept", L"all"});

    EXPECT_EQ(refused.exitStatus, 2);
    ExpectLine(refused.errors, "noch nicht in 3 Läufen gleich");
    EXPECT_EQ(Read(L"b"), "alt");
    Receive(L"a", "neu", 1);
    EXPECT_EQ(Review({L"--accept", L"all"}).exitStatus, 0);
    EXPECT_EQ(Read(L"a"), "neu");
}

TEST_F(RunnerReview, CountsRunsAndNotTheirRepetitions)
{
    Write(L"CReferenceModel/a.txt", "neu");
    Write(L"CReferenceModel/a.txt.expected", "alt");
    const auto run = [this](const std::vector<std::wstring>& library) {
        SHostOptions options;
        options.variables = {{LbReceivedFile::c_RunVariable, L""}};
        Run({L"run", L"--force", L"--retries", L"2"}, library, options);
        return LbReceivedFile::CountRuns("neu", m_folder.GetPathOf(L"data/CReferenceModel/a.txt.expected"));
    };

    EXPECT_EQ(run({}), 1U);
    EXPECT_EQ(run({L"-x", L"-r", L"3"}), 2U) << "child processes do not count as runs";
    EXPECT_EQ(run({L"-r", L"3"}), 3U);
}

TEST_F(RunnerReview, EmptiesReferencesOnlyIfConfirmed)
{
    Write(L"a", "alt");
    Receive(L"a", "");

    const SHostRun refused = Review({L"--accept", L"all"});

    EXPECT_EQ(refused.exitStatus, 2);
    ExpectLine(refused.errors, "'--accept-empty'");
    EXPECT_EQ(Read(L"a"), "alt");
    EXPECT_EQ(Review({L"--accept", L"all", L"--accept-empty"}).exitStatus, 0);
    EXPECT_EQ(Read(L"a"), "");
}

TEST_F(RunnerReview, CreatesEmptyReferencesOnlyIfConfirmed)
{
    Receive(L"a", "\n");

    const SHostRun refused = Review({L"--accept", L"all"});

    EXPECT_EQ(refused.exitStatus, 2);
    ExpectLine(refused.errors, "wären Referenzen leer, etwa ");
    EXPECT_FALSE(Holds(L"a"));
    EXPECT_EQ(Review({L"--accept", L"all", L"--accept-empty"}).exitStatus, 0);
    EXPECT_EQ(Read(L"a"), "\n");
}

TEST_F(RunnerReview, ShowsWholeLinesOutsideATerminal)
{
    const std::string begin(200, 'a');
    Write(L"a", "x\n" + begin + "alt\n");
    Receive(L"a", "x\n" + begin + "neu\n");

    ExpectLine(Review({L"--diff"}).output, "    -" + begin + "alt\n    +" + begin + "neu\n");
    ExpectLine(Review({L"--side-by-side"}).output, begin + "alt | " + begin + "neu\n");
}

TEST_F(RunnerReview, NamesTheOptionThatShowsFurtherPlaces)
{
    Write(L"a", "alt\nx\nalt\nx\nalt\n");
    Receive(L"a", "neu\nx\nneu\nx\nneu\n");

    ExpectLine(Review().output, "    +neu\n    weitere Stellen in dieser Datei: 2 ('--diff' zeigt sie)\n");
}

TEST_F(RunnerReview, ReportsThatThereIsNothingToDecide)
{
    const SHostRun run = Review({L"--accept", L"all", L"--reject", L"all"});
    EXPECT_EQ(run.exitStatus, 2) << "both options name the same changes";

    ExpectLine(Review({L"--accept", L"all"}).output, "Nichts zu übernehmen\n");
    ExpectLine(Review({L"--reject", L"all"}).output, "Nichts zu verwerfen\n");
}

TEST_F(RunnerReview, RefusesASpaceBeforeTheValueOfDiff)
{
    const std::wstring file = m_folder.GetPathOf(L"data/a");
    Write(L"a", "alt");
    Receive(L"a", "neu");

    for (const SHostRun& run : {Review({L"--diff", file}), RunRunner({L"review", L"--diff", file})})
    {
        EXPECT_EQ(run.exitStatus, 2);
        ExpectLine(run.errors, "; ein Wert von '--diff' steht hinter '='\n");
    }
}

TEST_F(RunnerReview, AsksForDecisionsOnATerminal)
{
    if (!CanRunHostOnTerminal())
    {
        GTEST_SKIP() << "programs cannot run on a terminal here (install the script command of util-linux)";
    }
    Write(L"a", "alt");
    Receive(L"a", "neu");
    SHostOptions options;
    options.onTerminal = true;
    options.variables = {{L"TERM", L"xterm"}};

    // The terminal has no input, so the dialog ends after its first question.
    const SHostRun run = RunRunner({L"review", m_folder.GetPathOf(L"data")}, options);
    const SHostRun onBuildServer = RunRunner({L"review", m_folder.GetPathOf(L"data"), L"--ci"}, options);
    const SHostRun sideBySide = RunRunner({L"review", m_folder.GetPathOf(L"data"), L"--side-by-side"}, options);

    EXPECT_NE(run.output.find("[1/1] "), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("weiter (w), Ende (e)? "), std::string::npos) << run.output;
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_EQ(onBuildServer.output.find("weiter (w)"), std::string::npos) << onBuildServer.output;
    EXPECT_EQ(onBuildServer.exitStatus, 1);
    EXPECT_EQ(sideBySide.output.find("weiter (w)"), std::string::npos) << sideBySide.output;
    EXPECT_NE(sideBySide.output.find("Änderungen: 1, Dateien: 1"), std::string::npos) << sideBySide.output;
}

TEST_F(RunnerReview, WarnsOfUndecidedChangesInRejectedFiles)
{
    const auto receiveAll = [this] {
        for (const wchar_t* const name : {L"a", L"b", L"c"})
        {
            Write(name, "eins\nzwei\ndrei\nx\n");
        }
        Receive(L"a", "EINS\nZWEI\ndrei\nx\n");
        Receive(L"b", "EINS\nzwei\nDREI\nx\n");
        Receive(L"c", "eins\nZWEI\nDREI\nx\n");
        return FromPlatformLines(Review().output);
    };
    const std::string listed = receiveAll();
    ExpectLine(listed, "Änderungen: 3, Dateien: 3\n");
    // The lines of each change begin with its name.
    const auto findName = [&listed](const char* line) {
        const std::size_t shown = listed.find(line);
        const std::size_t title = listed.rfind(" Dateien", shown);
        return LbEncoding::FromUtf8(listed.substr(listed.rfind('\n', title) + 1, 6));
    };
    const std::wstring one = findName("-eins");
    const std::wstring two = findName("-zwei");
    const std::wstring three = findName("-drei");

    ExpectLine(Review({L"--reject", one}).errors,
               "Warnung: ohne Entscheidung mit verworfen: 2 andere Änderungen in 2 Dateien; ein neuer Lauf");
    receiveAll();
    ExpectLine(Review({L"--reject", one, L"--accept", two}).errors, "1 andere Änderung in 1 Datei; ein neuer Lauf");
    receiveAll();
    EXPECT_EQ(Review({L"--reject", one, L"--accept", two, L"--reject", three}).errors, "");
    receiveAll();
    EXPECT_EQ(Review({L"--reject", m_folder.GetPathOf(L"data/a")}).errors, "") << "the whole file is named";
}

TEST_F(RunnerReview, FinishesAnInterruptedDecisionExceptOnABuildServer)
{
    Write(L"CFall/a", "alt");
    Receive(L"CFall/a", "neu");
    const std::wstring checksums = L"\"checksum\":\"" + LbReceivedFile::GetChecksum("neu") + L"\",\"expected\":\"" +
                                   LbReceivedFile::GetChecksum("alt") + L"\"";
    Write(L"lutestsuite-review.pending",
          "{\"accept\":true,\"parts\":[],\"temporary\":\"LuTestSuite-1.tmp\",\"files\":[{\"reference\":\"CFall/a\"," +
              LbEncoding::ToUtf8(checksums) + "}]}");

    const SHostRun refused = RunRunner({L"review", m_folder.GetPathOf(L"data/CFall"), L"--ci"});

    EXPECT_EQ(refused.exitStatus, 2);
    ExpectLine(refused.errors, "ist eine Entscheidung unvollendet");
    EXPECT_EQ(Read(L"CFall/a"), "alt");
    ExpectLine(RunRunner({L"review", m_folder.GetPathOf(L"data/CFall")}).output,
               "Unterbrochene Entscheidung vollendet: 1 Datei\nÄnderungen: 0");
    EXPECT_EQ(Read(L"CFall/a"), "neu");
}

TEST_F(RunnerReview, RemovesLeftoversOfADecisionExceptOnABuildServer)
{
    Write(L"CFall/lutestsuite-review.pending.tmp", "{");

    EXPECT_EQ(Review({L"--ci"}).exitStatus, 0);
    EXPECT_TRUE(Holds(L"CFall/lutestsuite-review.pending.tmp"));
    EXPECT_EQ(Review().exitStatus, 0);
    EXPECT_FALSE(Holds(L"CFall/lutestsuite-review.pending.tmp"));
}

TEST_F(RunnerReview, IsRecommendedByARunIfADecisionWasInterrupted)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    Write(L"CPassedModel/lutestsuite-review.pending", "");

    const SHostRun run = Run({L"run"});

    ExpectLine(run.errors, "Warnung: In ");
    ExpectLine(run.errors, "ist eine Entscheidung unvollendet: LuTestSuiteRunner review ");
}

TEST_F(RunnerReview, RefusesAFolderThatDoesNotExist)
{
    const SHostRun run = RunRunner({L"review", m_folder.GetPathOf(L"fehlt")});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "gibt es nicht");
}

TEST_F(RunnerReview, IsRecommendedByARunWithUndecidedDifferences)
{
    m_folder.MakeFolder(L"data/CPassedModel/sub");
    Receive(L"CPassedModel/sub/a", "neu", 1);

    const SHostRun run = Run({L"run"});

    const std::string separator(1, static_cast<char>(LbPath::c_Separator));
    const std::string first = "CPassedModel" + separator + "sub" + separator + "a.received";
    ExpectLine(run.errors, "Warnung: " + first + " ist nicht geprüft: LuTestSuiteRunner review ");
    EXPECT_EQ(run.exitStatus, 0);
    Receive(L"CPassedModel/b", "neu", 1);
    ExpectLine(Run({L"run", L"--force"}).errors, "b.received, " + first + " sind nicht geprüft");
    Receive(L"CPassedModel/c", "neu", 1);
    Receive(L"CPassedModel/d", "neu", 1);
    ExpectLine(Run({L"run", L"--force"}).errors, "d.received und eine weitere .received-Datei sind nicht geprüft");
    Receive(L"CPassedModel/e", "neu", 1);
    ExpectLine(Run({L"run", L"--force"}).errors, "d.received und 2 weitere .received-Dateien sind nicht geprüft");
}

TEST_F(RunnerReview, IsRecommendedByTheRunThatFindsTheDifference)
{
    Write(L"CReferenceModel/a.txt", "neu");

    ExpectLine(Run({L"run"}).errors, "a.txt.expected.received ist nicht geprüft");
}

TEST_F(RunnerReview, AppliesAllToFilesThatAreNotNamed)
{
    Write(L"a", "alt");
    Receive(L"a", "neu");
    Write(L"b", "alt");
    Receive(L"b", "anders");

    const SHostRun run = Review({L"--accept", L"all", L"--reject", m_folder.GetPathOf(L"data/b")});

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    EXPECT_EQ(Read(L"a"), "neu");
    EXPECT_EQ(Read(L"b"), "alt");
    EXPECT_FALSE(Holds(L"b.received"));
}

} // namespace

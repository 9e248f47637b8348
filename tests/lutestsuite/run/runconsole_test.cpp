#include <regex>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/runtest.h"

namespace
{

using testing::ElementsAre;
using testing::IsSupersetOf;

using Lines = std::vector<CapturedOutput::SLine>;

constexpr auto Plain = CapturedOutput::Plain;
constexpr auto Bold = CapturedOutput::Bold;
constexpr auto Colored = CapturedOutput::Colored;
constexpr auto BoldColored = CapturedOutput::BoldColored;

class RunConsole : public RunTest
{
protected:
    /// Runs one case and returns the line that completes its header.
    CapturedOutput::SLine GetResultLine(const LuTestSuiteSetup& setup)
    {
        Run(setup);
        return m_output.GetLines().at(2);
    }

    CapturedOutput::SLine GetResultLine(const std::wstring& className, const std::wstring& caseName)
    {
        return GetResultLine(MakeSetup({MakeUnitTest(className, {caseName})}));
    }

    Lines GetSummary() const
    {
        Lines lines = GetLinesFrom(L"Zusammenfassung\n");
        return lines;
    }
};

TEST_F(RunConsole, ShowsEveryLineWithItsAttributes)
{
    Run(MakeSetup(
        {MakeUnitTest(L"CPassedModel", {L"eins", L"zwei mit Lücke"}), MakeUnitTest(L"CFailedModel", {L"allein"})}));

    EXPECT_THAT(m_output.GetLines(),
                ElementsAre(Bold(L"CPassedModel\n"), //
                            Plain(L"\teins... "), BoldColored(L"OK", LuColor::c_GREEN), Plain(L"\n"),
                            Plain(L"\tzwei mit Lücke... "), BoldColored(L"OK", LuColor::c_GREEN), Plain(L"\n"),
                            Bold(L"CFailedModel\n"), //
                            Plain(L"\tallein... "),
                            BoldColored(L"FEHLER (Die Ausführung dieses Testfalls ist fehlgeschlagen)", LuColor::c_RED),
                            Plain(L"\n"), Plain(L"\n"), Colored(L"Zusammenfassung\n", LuColor::c_DARKBLUE),
                            Colored(L"\tAusgeführt:\t2 Klassen, 3 Tests\n", LuColor::c_DARKBLUE),
                            Colored(L"\tErfolgreich:\t1 Klasse, 2 Tests\n", LuColor::c_GREEN),
                            Colored(L"\tFehlerhaft:\t1 Klasse, 1 Test\n", LuColor::c_RED), //
                            Plain(L"\n"), Colored(L"Fehlerhafte Klassen:\n", LuColor::c_RED),
                            Colored(L"\tCFailedModel: 1 fehlerhafte Testfälle\n", LuColor::c_RED)));
}

TEST_F(RunConsole, ShowsExceptions)
{
    EXPECT_EQ(
        GetResultLine(L"CResultModel", L"eigene Ausnahme"),
        BoldColored(L"FEHLER (Während der Ausführung dieses Testfalls wurde eine Exception geworfen)", LuColor::c_RED));
}

TEST_F(RunConsole, ShowsMissingInput)
{
    EXPECT_EQ(GetResultLine(L"CResultModel", L"keine Eingabe"),
              BoldColored(L"FEHLER (Die Datei mit den Testdaten konnte nicht geladen werden)", LuColor::c_RED));
}

TEST_F(RunConsole, ShowsDifferentOutput)
{
    EXPECT_EQ(GetResultLine(L"CResultModel", L"abweichend"),
              BoldColored(L"FEHLER (Output unterscheidet sich von der Referenz-Ausführung)", LuColor::c_RED));
}

TEST_F(RunConsole, ShowsUnknownErrors)
{
    EXPECT_EQ(GetResultLine(L"CResultModel", L"unbekannter Wert"),
              BoldColored(L"FEHLER (Unbekannter Fehler)", LuColor::c_RED));
}

TEST_F(RunConsole, ShowsCasesOfUnknownClasses)
{
    EXPECT_EQ(GetResultLine(L"CUnknownModel", L"Fall"),
              BoldColored(L"FEHLER (Keinen passenden Testfall gefunden.)", LuColor::c_RED));
}

TEST_F(RunConsole, ShowsACaseWithTooLongANameAsUnknownError)
{
    EXPECT_EQ(GetResultLine(L"CLongNameModel", std::wstring(1024, L'n')),
              BoldColored(L"FEHLER (Unbekannter Fehler)", LuColor::c_RED));
}

TEST_F(RunConsole, NumbersRepetitionsUnderOneHeading)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins", L"zwei mit Lücke"})});
    setup.params.repetitions = 3;

    Run(setup);

    const std::wstring text = m_output.GetText();
    EXPECT_EQ(text.substr(0, text.find(L"\n\n")), L"CPassedModel\n"
                                                  L"\t(1/3) eins... OK\n"
                                                  L"\t(2/3) eins... OK\n"
                                                  L"\t(3/3) eins... OK\n"
                                                  L"\t(1/3) zwei mit Lücke... OK\n"
                                                  L"\t(2/3) zwei mit Lücke... OK\n"
                                                  L"\t(3/3) zwei mit Lücke... OK");
}

TEST_F(RunConsole, ShowsNoCounterForOneRepetition)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"})});
    setup.params.repetitions = 1;

    Run(setup);

    EXPECT_EQ(m_output.GetLines().at(1), Plain(L"\teins... "));
}

TEST_F(RunConsole, ShowsAnEmptySummaryForZeroRepetitions)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"})});
    setup.params.repetitions = 0;

    const auto result = Run(setup);

    EXPECT_TRUE(result.cases.empty());
    EXPECT_EQ(m_output.GetText(), L"\n"
                                  L"Zusammenfassung\n"
                                  L"\tAusgeführt:\t0 Klassen, 0 Tests\n"
                                  L"\tErfolgreich:\t0 Klassen, 0 Tests\n");
}

TEST_F(RunConsole, RepeatsTheHeadingForASecondUnitTestOfAClass)
{
    Run(MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"}), MakeUnitTest(L"CPassedModel", {L"eins"})}));

    const std::wstring text = m_output.GetText();
    EXPECT_EQ(text.substr(0, text.find(L"\n\n")), L"CPassedModel\n\teins... OK\nCPassedModel\n\teins... OK");
}

TEST_F(RunConsole, AppendsTheTimeIfRepetitionsAreGiven)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"})});
    setup.params.repetitionsGiven = true;

    const CapturedOutput::SLine line = GetResultLine(setup);

    EXPECT_TRUE(std::regex_match(line.text, std::wregex(L"OK \\[\\d+\\.\\d{2}(ns|µs|ms|s)\\]")));
    EXPECT_EQ(line, BoldColored(line.text, LuColor::c_GREEN));
}

TEST_F(RunConsole, AppendsZeroTimeToACaseThatNeverRan)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CUnknownModel", {L"Fall"})});
    setup.params.repetitionsGiven = true;

    EXPECT_EQ(GetResultLine(setup).text, L"FEHLER (Keinen passenden Testfall gefunden.) [0 s]");
}

TEST_F(RunConsole, AppendsABlankWhenVerboseWithoutThreadAndProcess)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"})});
    setup.params.verbose = true;

    EXPECT_EQ(GetResultLine(setup), BoldColored(L"OK ", LuColor::c_GREEN));
}

TEST_F(RunConsole, AppendsTheBlankOfVerboseLinesBehindTheTime)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CUnknownModel", {L"Fall"})});
    setup.params.repetitionsGiven = true;
    setup.params.verbose = true;

    EXPECT_EQ(GetResultLine(setup).text, L"FEHLER (Keinen passenden Testfall gefunden.) [0 s] ");
}

TEST_F(RunConsole, UsesTheSingularForOne)
{
    Run(MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"})}));

    EXPECT_THAT(GetSummary(), ElementsAre(Colored(L"Zusammenfassung\n", LuColor::c_DARKBLUE),
                                          Colored(L"\tAusgeführt:\t1 Klasse, 1 Test\n", LuColor::c_DARKBLUE),
                                          Colored(L"\tErfolgreich:\t1 Klasse, 1 Test\n", LuColor::c_GREEN)));
}

TEST_F(RunConsole, ListsFailedUnitTestsInTheirOrder)
{
    Run(MakeSetup({MakeUnitTest(L"CResultModel", {L"abweichend", L"bestanden", L"keine Eingabe"}),
                   MakeUnitTest(L"CPassedModel", {L"eins"}), MakeUnitTest(L"CFailedModel", {L"allein"})}));

    EXPECT_THAT(GetSummary(), ElementsAre(Colored(L"Zusammenfassung\n", LuColor::c_DARKBLUE),
                                          Colored(L"\tAusgeführt:\t3 Klassen, 5 Tests\n", LuColor::c_DARKBLUE),
                                          Colored(L"\tErfolgreich:\t1 Klasse, 2 Tests\n", LuColor::c_GREEN),
                                          Colored(L"\tFehlerhaft:\t2 Klassen, 3 Tests\n", LuColor::c_RED), //
                                          Plain(L"\n"), Colored(L"Fehlerhafte Klassen:\n", LuColor::c_RED),
                                          Colored(L"\tCResultModel: 2 fehlerhafte Testfälle\n", LuColor::c_RED),
                                          Colored(L"\tCFailedModel: 1 fehlerhafte Testfälle\n", LuColor::c_RED)));
}

TEST_F(RunConsole, UsesThePluralForZero)
{
    Run(MakeSetup({MakeUnitTest(L"CFailedModel", {L"allein"})}));

    EXPECT_THAT(GetSummary(), IsSupersetOf(Lines{Colored(L"\tErfolgreich:\t0 Klassen, 0 Tests\n", LuColor::c_GREEN),
                                                 Colored(L"\tFehlerhaft:\t1 Klasse, 1 Test\n", LuColor::c_RED)}));
}

TEST_F(RunConsole, ShowsPercentSignsOfNamesAsTheyAre)
{
    Run(MakeSetup({MakeUnitTest(L"100%s", {L"%d%n"})}));

    const Lines lines = m_output.GetLines();
    EXPECT_EQ(lines.at(0), Bold(L"100%s\n"));
    EXPECT_EQ(lines.at(1), Plain(L"\t%d%n... "));
}

TEST_F(RunConsole, PrintsOnlyTheSummaryForAUnitTestListWithoutCases)
{
    Run(MakeSetup({MakeUnitTest(L"CPassedModel", {})}));

    EXPECT_EQ(m_output.GetText(), L"\n"
                                  L"Zusammenfassung\n"
                                  L"\tAusgeführt:\t0 Klassen, 0 Tests\n"
                                  L"\tErfolgreich:\t0 Klassen, 0 Tests\n");
}

} // namespace

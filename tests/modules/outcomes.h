/// The expected results of the cases in the test modules: one table for all run modes.
#pragma once

#include <string_view>

#include "testing/lutestsuite/lutestsuiterun.h"

namespace models
{

/// One case. Has no path of the unit test's data directory, because no model in the table uses that directory.
struct SOutcome
{
    const wchar_t* className;
    const wchar_t* caseName;
    LuTestSuiteRun::ECaseRunResult result;
    const wchar_t* messages;
};

/// The modules with the classes of the table, as named in the option that loads them.
inline constexpr const wchar_t* c_Modules[] = {L"resultmodels", L"exceptionmodels", L"messagemodels",
                                               L"namemodels",   L"debuggingmodels", L"placemodels"};

using enum LuTestSuiteRun::ECaseRunResult;

inline constexpr SOutcome c_Outcomes[] = {
    // Every result of a sub-test.
    {L"CResultModel", L"keine Eingabe", NoInput, L""},
    {L"CResultModel", L"bestanden", Ok, L""},
    {L"CResultModel", L"fehlgeschlagen", Error, L""},
    {L"CResultModel", L"eigene Ausnahme", Exception, L""},
    {L"CResultModel", L"abweichend", Different, L""},
    {L"CResultModel", L"unbekannter Wert", Unknown, L""},
    {L"CResultModel", L"ohne Antwort", Ok, L""},
    {L"CPassedModel", L"eins", Ok, L""},
    {L"CPassedModel", L"zwei mit Lücke", Ok, L""},
    {L"CFailedModel", L"allein", Error, L""},

    // Exceptions from the operations that the runner calls; the runner reports them.
    {L"CConstructorThrows", L"Fall", Exception, L"\t\tERROR: kaputt\n"},
    {L"CSetMessageStreamThrows", L"Fall", Exception, L"\t\tERROR: kaputt\n"},
    {L"CSetDataDirectoryThrows", L"Fall", Exception, L"\t\tERROR: kaputt\n"},
    {L"CInitSubtestsThrows", L"Fall", Exception, L"\t\tERROR: kaputt\n"},
    {L"CPrepareSubtestThrows", L"Fall", Exception, L"\t\tERROR: kaputt\n"},
    {L"CGetSubtestCountThrows", L"Fall", Exception, L"\t\tERROR: kaputt\n"},
    {L"CGetSubtestNameThrows", L"Fall", Exception, L"\t\tERROR: kaputt\n"},
    {L"CRunUnitTestThrows", L"Fall", Exception, L"\t\tERROR: kaputt\n"},
    {L"CRunUnitTestThrowsNumber", L"Fall", Exception,
     L"\t\tINFO:  vor der Ausnahme\n\t\tERROR: Unbekannte Exception\n"},

    // Exceptions from a sub-test's function; the unit test reports them.
    {L"CSubtestExceptionModel", L"Standard", Exception, L"\t\tERROR: kaputt\n"},
    {L"CSubtestExceptionModel", L"Text", Exception, L"\t\tERROR: größer als erlaubt\n"},
    {L"CSubtestExceptionModel", L"Literal", Exception, L"\t\tERROR: fester Text\n"},
    {L"CSubtestExceptionModel", L"Zahl", Exception, L"\t\tERROR: Unbekannte Exception\n"},
    {L"CSubtestExceptionModel", L"nach Meldungen", Exception,
     L"\t\tINFO:  erste\n\t\tERROR: zweite\n\t\tERROR: kaputt\n"},

    // Message lines.
    {L"CMessageModel", L"Fehler", Error, L"\t\tERROR: 3 statt 4\n"},
    {L"CMessageModel", L"Information", Ok, L"\t\tINFO:  Größe 12 µm\n"},
    {L"CMessageModel", L"mehrere", Error, L"\t\tINFO:  erste\n\t\tERROR: zweite\n\t\tERROR: dritte\n"},
    {L"CMessageModel", L"Fehler, doch bestanden", Ok, L"\t\tERROR: übergangen\n"},
    {L"CMessageModel", L"außerhalb der Tabelle", Ok, L"\t\tINFO:  \U0001F600 €\n"},

    // Names match exactly and case-sensitively; the first of equal names counts. Some classes are not unit tests.
    {L"CNameModel", L"doppelt", Ok, L"\t\tINFO:  der erste\n"},
    {L"CNameModel", L"Groß", Ok, L""},
    {L"CNameModel", L"groß", NoMatchingCase, L""},
    {L"CNameModel", L"Gro", NoMatchingCase, L""},
    {L"CNameModel", L"Groß ", NoMatchingCase, L""},
    {L"CNameModel", L"", NoMatchingCase, L""},
    {L"CNameModel", L"gibt es nicht", NoMatchingCase, L""},
    {L"cnamemodel", L"Groß", NoMatchingCase, L""},
    {L"CUnknownModel", L"Fall", NoMatchingCase, L""},
    {L"CNoUnitTest", L"Fall", NoMatchingCase, L""},
    {L"CNotCreatableModel", L"Fall", NoMatchingCase, L""},

    // The run requests no debugging option, so the runner sets each supported option to false, in this order.
    {L"CDebuggingModel", L"Optionen", Ok, L"\t\tINFO:  1=0\n\t\tINFO:  2=0\n\t\tINFO:  0=0\n"},
    {L"CPartlyDebuggingModel", L"Optionen", Ok, L"\t\tINFO:  2=0\n"},
};

/// The module with the cases that only child processes can run.
inline constexpr const wchar_t* c_CrashModule = L"crashmodels";

/// The first and the last case pass. Most of the cases between them would end or block the runner's process.
inline constexpr SOutcome c_CrashOutcomes[] = {
    {L"CCrashModel", L"vorher", Ok, L""},
    {L"CCrashModel", L"Zugriffsverletzung", Unknown, L"\t\tINFO:  vor dem Absturz\n"},
    {L"CCrashModel", L"Stapelüberlauf", Unknown, L""},
    {L"CCrashModel", L"abort", Unknown, L""},
    {L"CCrashModel", L"terminate", Unknown, L""},
    {L"CCrashModel", L"exit", Unknown, L""},
    {L"CCrashModel", L"Division durch null", Unknown, L""},
    {L"CCrashModel", L"Endlosschleife", TimeOut, L""},
    {L"CCrashModel", L"Verklemmung", TimeOut, L""},
    {L"CCrashModel", L"geschlossene Dateien", Ok, L""},
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    // Not with sanitizers, which end the process when memory runs out.
    {L"CCrashModel", L"kein Speicher", Exception, L"\t\tERROR: std::bad_alloc\n"},
#endif
    {L"CDyingModel", L"Zugriffsverletzung danach", Unknown, L"\t\tINFO:  bestanden\n"},
    {L"CDyingModel", L"Exception danach", Unknown, L"\t\tINFO:  bestanden\n"},
    {L"CDyingModel", L"exit danach", Unknown, L"\t\tINFO:  bestanden\n"},
    {L"CCrashModel", L"nachher", Ok, L""},
};

/// The beginning of the line that reports the end of a case's process.
inline constexpr const wchar_t* c_EndOfProcess = L"\t\tERROR: Der Prozess des Testfalls endete mit ";

/// True if the case ends the process that runs it.
inline bool EndsProcess(const SOutcome& outcome)
{
    return outcome.result == Unknown && std::wstring_view(outcome.className) != L"CResultModel";
}

} // namespace models

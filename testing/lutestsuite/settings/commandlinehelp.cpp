/// The help text of the command line.

#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

// clang-format off
constexpr const wchar_t* c_Help =
    L"Aufruf: LuTestSuiteCLI[D].exe [OPTION]...\n"
    L"Führt alle in den Binaries und im Datenverzeichnis gefundenen Unit-Tests aus.\n"
    L"Optionen:\n"
    L"  -h, --help            Dieser Text.\n"
    L"\n"
    L"Optionen zum Bestimmen der auszuführenden Tests:\n"
    L"  -d, --data-dir PATH        Pfad zum Datenverzeichnis in dem nach Unittestverzeichnissen und Datensatzdateien gesucht wird.\n"
    L"  -i, --include REGEX        Regulärer Ausdruck zum expliziten Bestimmen aller auszuführender Testfälle.\n"
    L"  -e, --exclude REGEX        Regulärer Ausdruck zum Auschliessen nicht auszuführender Testfälle.\n"
    L"      --include-config PATH  Inkludiere die in der XML-Config Datei gespeicherten Testfälle.\n"
    L"\n"
    L"Optionen zum Generieren der Reports:\n"
    L"      --xml PATH                  Ob eine XML Report Datei mit gegebenem PATH generiert werden soll. \n"
    L"      --html PATH                 Ob eine HTML Report Datei mit gegebenem PATH generiert werden soll. \n"
    L"  -a, --autohtml                  Ob automatisch bei jeder Ausführung je ein HTML-Report generiert und geöffnet werden soll.\n"
    L"  -o, --open                      Ob generierte Reports immergleich im Browser geöffnet werden sollen.\n"
    L"      --small-report              Ob nur eine verkleinerte Variante ohne Fallresultate geschrieben werden soll.\n"
    L"      --no-css                    Es wird kein zusätzliches Default-Stylesheet zu jedem HTML Report mitgeneriert.\n"
    L"      --no-js                     Es wird keine zusätzliche Javascript-Datei zu jedem HTML Report mitgeneriert.\n"
    L"      --message-output-max COUNT  Maximale Anzahl ausgegebener Messagezeilen pro ausgeführtem Testfall.\n"
    L"      --message-report-max COUNT  Maximale Anzahl reportierten Messagezeilen in den HTML/XML-Reports.\n"
    L"      --tolerate-warnings         Warnungen werden in den generierten HTML-Reports nicht speziell hervorgehoben.\n"
    L"\n"
    L"Diverses:\n"
    L"  -x, --external                  Testfälle werden in separatem Prozess ausgeführt.\n"
    L"  -s  --isolated                  Jeder einzelne Testfall wird in einem dedizierten Prozess ausgeführt. Impliziert -x.\n"
    L"  -p, --parallel                  Parallelisierte Ausführung über mehrere Worker-Threads.\n"
    L"  -w, --worker-threads COUNT      Anzahl Worker-Threads für die parallelisierte Ausführung. Impliziert -p.\n"
    L"  -r, --repetitions COUNT         Anzahl Ausführungen eines einzelnen Testfalls.\n"
    L"  -c, --test-case-max COUNT       Oberes Limit für die Anzahl auszuführender Testfälle.\n"
    L"  -t, --time-out-sec COUNT        Timeout pro Testfall. (Hat nur Kombination mit --external einen Effekt)\n"
    L"  -v, --verbose                   Zusätzlich Infoausgaben.\n"
    L"      --track-heap                Heapmemory-Tracking aktivieren.\n"
    L"      --dump-heap                 Ob bei Memoryleaks die Allokationstabelle ausgegeben werden soll.\n"
    L"      --break-alloc-id ID         Allokations-ID, bei der in einen Breakpoint eingetreten werden soll.\n"
    L"      --break-alloc-size SIZE     Allokationsgrösse, bei der in einen Breakpoint eingetreten werden soll.\n"
    L"      --no-assert-dialog          Im Debugmodus Assert-Dialoge unterdrücken.\n"
    L"      --no-regex                  Verwende keine Regex bei den Include/Exclude-Namen, sondern simplen String-Vergleich.\n"
    L"      --dll NAME                  Name explizit zu ladender DLLs (ohne Endung).\n"
    L"\n"
    L"Andere Ausführungsmodi:\n"
    L"  -q, --query-mode                Abfragemodus ohne eigentliches Ausführen der Fälle.\n"
    L"      --archive-run NAME          Modus für Ausführung mit extra Archivierungsfunktionen.\n"
    L"      --diff-in                   Diff-Report: Pfad zu einem der zwei XML-Reports, für die ein Diff-Report generiert werden soll.\n"
    L"      --diff-out                  Diff-Report: Name der Output-Datei. Überschreibt automatischen Namen.\n"
    L"      --list-duplicates           Generiere Auflistung von Datensatzdateien mit dupliziertem Inhalt.\n"
    L"      --delete-duplicates         Lösche Datensatzdateien mit dupliziertem Inhalt.\n"
    L"      --list-disabled             Generiere Auflistung aller deaktivierter Testfälle.\n"
    L"\n"
    L"Debugging-Extensions Optionen:\n"
    L"      --de-verbose-output           Setze IDebugging::eO_VerboseOutput.\n"
    L"      --de-debugging-serialization  Setze IDebugging::eO_DebuggingSerialization.\n"
    L"      --de-predefined-breakpoints   Setze IDebugging::eO_PredefinedBreakPoints.\n"
    L"\n";
// clang-format on

} // namespace

std::wstring LuTestSuiteUtils::GetCommandLineHelp()
{
    return c_Help;
}

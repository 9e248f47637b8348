/// The command-line host.
///
/// Exit status: 0 if the call succeeded, 1 if cases failed or the arguments were refused, 2 if an exception left the
/// library, a case ended the process, or standard output was lost; one line on standard error then says what happened.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/os/console.h"
#include "base/os/process.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuitecli/consoleout.h"

namespace
{

constexpr int c_Succeeded = 0;
constexpr int c_Failed = 1;
constexpr int c_Broken = 2;

/// A terminal shows colours unless NO_COLOR is set and not empty; files and pipes get plain text.
void chooseOutput()
{
    if (LbOs::GetEnvironmentText(L"NO_COLOR").empty() && LbOs::EnableTerminalSequences())
    {
        static CConsoleOut s_ConsoleOut;
        LuTestSuiteOut::AddCustomOut(&s_ConsoleOut);
        LuTestSuiteOut::SetConsoleOut(false);
    }
}

/// The id of this process while it runs the library's entry; otherwise 0.
unsigned long s_workingProcess = 0;

/// Marks the time during which the entry runs. exit() does not run the destructor, so the mark shows such an end.
class CWork : public INonCopyable
{
public:
    CWork() { s_workingProcess = LbOs::GetProcessId(); }
    ~CWork() { s_workingProcess = 0; }
};

/// A case that calls exit() must not look like a success. Forked copies of the process may end in any way.
void endUnfinished()
{
    if (s_workingProcess == LbOs::GetProcessId())
    {
        LbOs::WriteStandardError(LbEncoding::ToUtf8(L"Fehler: Der Prozess wurde mitten im Aufruf beendet\n"));
        std::fflush(nullptr);
        LbOs::EndProcess(c_Broken);
    }
}

/// True if another host started this process to run cases; the other host checks how this process ends.
bool isChild(const std::vector<std::wstring>& arguments)
{
    return std::ranges::find(arguments, L"--response-event-id") != arguments.end();
}

int run(int argumentCount, const char* const* arguments)
{
    chooseOutput();
    const std::vector<std::wstring> texts = LbOs::GetArguments(argumentCount, arguments);
    std::vector<const wchar_t*> vector;
    for (const std::wstring& text : texts)
    {
        vector.push_back(text.c_str());
    }
    LuTestSuiteEnvironment environment;
    const auto work = isChild(texts) ? nullptr : std::make_unique<CWork>();
    const bool succeeded =
        LuTestSuiteUtils::RunCommandLine(environment, static_cast<int>(vector.size()), vector.data());
    // Cases may have left output in the stream.
    LbOs::WriteStandardOutput("");
    if (LbOs::IsStandardOutputLost() && !isChild(texts))
    {
        throw std::wstring(L"Die Standardausgabe konnte nicht vollständig geschrieben werden");
    }
    return succeeded ? c_Succeeded : c_Failed;
}

/// Makes one line with the prefix of errors, even if the message contains line feeds.
int reportError(std::wstring message)
{
    while (!message.empty() && message.back() == L'\n')
    {
        message.pop_back();
    }
    for (wchar_t& character : message)
    {
        character = character == L'\n' || character == L'\r' ? L' ' : character;
    }
    // Some messages have the prefix already: "Fehler: ..." and "Fehler in Config-File: ...".
    const bool isMarked = message.starts_with(L"Fehler: ") || message.starts_with(L"Fehler in ");
    LbOs::WriteStandardError(LbEncoding::ToUtf8((isMarked ? L"" : L"Fehler: ") + message + L"\n"));
    return c_Broken;
}

std::wstring describe(const LbException& exception)
{
    const std::wstring message =
        exception.GetMessageText().empty() ? std::wstring(L"Interner Fehler") : exception.GetMessageText();
    return LbFormat(L"%s (%s, Zeile %u, %s)", message, exception.GetSourceFile(), exception.GetLine(),
                    exception.GetFunction());
}

} // namespace

int main(int argumentCount, char** arguments)
{
    std::atexit(&endUnfinished);
    try
    {
        return run(argumentCount, arguments);
    }
    catch (const std::wstring& message)
    {
        return reportError(message);
    }
    catch (const LbException& exception)
    {
        return reportError(describe(exception));
    }
    catch (const std::bad_alloc&)
    {
        return reportError(L"Nicht genügend Speicher");
    }
    catch (const std::exception& exception)
    {
        return reportError(LbFormat(L"Unerwartete Ausnahme: %S", exception.what()));
    }
    catch (...)
    {
        return reportError(L"Unbekannte Ausnahme");
    }
}

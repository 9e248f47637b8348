/// The command-line host.
///
/// Exit status: 0 when the call succeeded, 1 when cases failed or the arguments were refused, 2 when an exception left
/// the library; its text goes to standard error, in one line.

#include <exception>
#include <new>
#include <string>
#include <vector>

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

/// Colours are for people: a terminal shows them unless NO_COLOR is set, files and pipes get plain text.
void chooseOutput()
{
    if (LbOs::GetEnvironmentText(L"NO_COLOR").empty() && LbOs::EnableTerminalSequences())
    {
        static CConsoleOut s_ConsoleOut;
        LuTestSuiteOut::AddCustomOut(&s_ConsoleOut);
        LuTestSuiteOut::SetConsoleOut(false);
    }
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
    const bool succeeded =
        LuTestSuiteUtils::RunCommandLine(environment, static_cast<int>(vector.size()), vector.data());
    return succeeded ? c_Succeeded : c_Failed;
}

/// One line, whatever line feeds the message holds, that begins as errors do.
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
    // Some messages bring the mark along: "Fehler: ..." and "Fehler in Config-File: ...".
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

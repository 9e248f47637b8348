#include "testing/lutestsuitehost/hostmain.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/os/console.h"
#include "base/os/process.h"
#include "testing/lutestsuite/environment/crashnotes.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuitehost/consoleout.h"

namespace LuTestSuiteHost
{

namespace
{

/// The id of this process while a CWork lives; otherwise 0.
unsigned long s_workingProcess = 0;

/// exit() and quick_exit() do not run the destructor of CWork, so s_workingProcess is still set if a case called them.
void endUnfinished()
{
    if (s_workingProcess == LbOs::GetProcessId())
    {
        std::fflush(nullptr);
        LuTestSuite::WriteUnfinishedEnd();
        LbOs::EndProcess(c_Broken);
    }
}

std::wstring describe(const LbException& exception)
{
    const std::wstring message =
        exception.GetMessageText().empty() ? std::wstring(L"Interner Fehler") : exception.GetMessageText();
    return LbFormat(L"%s (%s, Zeile %u, %s)", message, exception.GetSourceFile(), exception.GetLine(),
                    exception.GetFunction());
}

int reportError(std::wstring message)
{
    WriteError(std::move(message));
    return c_Broken;
}

} // namespace

CWork::CWork()
{
    s_workingProcess = LbOs::GetProcessId();
}

CWork::~CWork()
{
    s_workingProcess = 0;
}

void ChooseOutput()
{
    if (LbOs::GetEnvironmentText(L"NO_COLOR").empty() && LbOs::EnableTerminalSequences())
    {
        static CConsoleOut s_ConsoleOut;
        LuTestSuiteOut::AddCustomOut(&s_ConsoleOut);
        LuTestSuiteOut::SetConsoleOut(false);
    }
}

void WriteError(std::wstring message)
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
}

bool IsChild(const Arguments& arguments)
{
    return std::ranges::find(arguments, L"--response-event-id") != arguments.end();
}

int RunLibrary(const Arguments& arguments)
{
    std::vector<const wchar_t*> vector;
    for (const std::wstring& text : arguments)
    {
        vector.push_back(text.c_str());
    }
    LuTestSuiteEnvironment environment;
    const auto work = IsChild(arguments) ? nullptr : std::make_unique<CWork>();
    const bool succeeded =
        LuTestSuiteUtils::RunCommandLine(environment, static_cast<int>(vector.size()), vector.data());
    return succeeded ? c_Succeeded : c_Failed;
}

int Main(int count, const char* const* arguments, int (*run)(const Arguments& arguments))
{
    std::atexit(&endUnfinished);
    LbOs::CallAtQuickExit(&endUnfinished);
    try
    {
        const Arguments texts = LbOs::GetArguments(count, arguments);
        const int status = run(texts);
        // Flushes output that cases may have left in the stream.
        LbOs::WriteStandardOutput("");
        if (LbOs::IsStandardOutputLost() && !IsChild(texts))
        {
            throw std::wstring(L"Die Standardausgabe konnte nicht vollständig geschrieben werden");
        }
        return status;
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

} // namespace LuTestSuiteHost

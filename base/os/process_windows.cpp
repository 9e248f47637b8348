#include "base/os/process.h"

#include <cstdlib>
#include <limits>

#include <process.h>

#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/os/carriedcall.h"
#include "base/os/console.h"
#include "base/os/windows/api.h"

namespace
{

unsigned __stdcall runCall(void* argument)
{
    static_cast<LbOs::CCarriedCall*>(argument)->Run();
    return 0;
}

struct SProgramName
{
    std::wstring text;
    std::size_t end = 0; ///< the position in the command line, just after the name
};

/// The first word of a command line has no escapes: each quotation mark begins or ends a part that may contain blanks.
/// The word is empty if the line begins with a blank.
SProgramName readProgramName(const std::wstring& line)
{
    SProgramName name;
    bool isQuoted = false;
    for (; name.end < line.size() && (isQuoted || (line[name.end] != L' ' && line[name.end] != L'\t')); ++name.end)
    {
        if (line[name.end] == L'"')
        {
            isQuoted = !isQuoted;
        }
        else
        {
            name.text += line[name.end];
        }
    }
    return name;
}

constexpr const wchar_t* c_WindowLibrary = L"user32.dll";

/// False for a service or a session without desktop.
bool hasDesktop()
{
    using LbOs::Windows::FindSystemFunction;
    const auto getStation =
        FindSystemFunction<decltype(GetProcessWindowStation)>(c_WindowLibrary, "GetProcessWindowStation");
    const auto getInformation =
        FindSystemFunction<decltype(GetUserObjectInformationW)>(c_WindowLibrary, "GetUserObjectInformationW");
    USEROBJECTFLAGS flags = {};
    return getStation != nullptr && getInformation != nullptr &&
           getInformation(getStation(), UOI_FLAGS, &flags, sizeof(flags), nullptr) != FALSE &&
           (flags.dwFlags & WSF_VISIBLE) != 0;
}

int showAssertBox(const wchar_t* text)
{
    const auto show = LbOs::Windows::FindSystemFunction<decltype(MessageBoxW)>(c_WindowLibrary, "MessageBoxW");
    return show == nullptr || !hasDesktop()
               ? 0
               : show(nullptr, text, L"Assertion",
                      MB_ABORTRETRYIGNORE | MB_ICONERROR | MB_TASKMODAL | MB_SETFOREGROUND);
}

} // namespace

std::vector<std::wstring> LbOs::GetArguments(int /*count*/, const char* const* /*arguments*/)
{
    // The system's own call for this is in the shell library, which is slow to load.
    const std::wstring line = GetCommandLineW();
    const SProgramName program = readProgramName(line);
    std::vector<std::wstring> arguments = LbCommandLine::Split(line.substr(program.end));
    arguments.insert(arguments.begin(), program.text);
    return arguments;
}

void LbOs::RunOnStack(std::size_t stackSize, const std::function<void()>& function)
{
    CCarriedCall call(function);
    const bool isPossible = stackSize <= std::numeric_limits<unsigned>::max();
    const HANDLE thread =
        isPossible ? reinterpret_cast<HANDLE>(_beginthreadex(nullptr, static_cast<unsigned>(stackSize), &runCall, &call,
                                                             STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr))
                   : nullptr;
    if (thread == nullptr)
    {
        throw LbException(L"Ein Thread konnte nicht gestartet werden");
    }
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    call.Rethrow();
}

void LbOs::SetCurrentThreadName(const std::wstring& name)
{
    // Windows versions before 10 lack the call.
    using SetDescription = HRESULT(WINAPI*)(HANDLE, const wchar_t*);
    const auto setDescription = reinterpret_cast<SetDescription>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
    if (setDescription != nullptr)
    {
        setDescription(GetCurrentThread(), name.c_str());
    }
}

void LbOs::TraceToSystem(const std::wstring& text)
{
    OutputDebugStringW((text + L"\n").c_str());
}

LbOs::EAssertAnswer LbOs::ShowAssertDialog(const std::wstring& text)
{
    switch (showAssertBox(text.c_str()))
    {
    case IDABORT:
        return EAssertAnswer::Abort;
    case IDRETRY:
        return EAssertAnswer::Break;
    case IDIGNORE:
        return EAssertAnswer::Ignore;
    default:
        WriteStandardError(LbEncoding::ToUtf8(text) + "\n");
        return EAssertAnswer::Ignore;
    }
}

void LbOs::BreakIntoDebugger()
{
    DebugBreak();
}

void LbOs::CallAroundForks(const SForkHandlers& /*handlers*/) {}

unsigned long LbOs::GetProcessId()
{
    return GetCurrentProcessId();
}

void LbOs::CallAtQuickExit(void (* /*function*/)()) {}

void LbOs::EndProcess(int status)
{
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
    // The call does not return, but its declaration does not say so.
    std::abort();
}

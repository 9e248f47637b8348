#include "base/os/process.h"

#include <cstdlib>
#include <limits>
#include <memory>

#include <process.h>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/os/carriedcall.h"
#include "base/os/console.h"
#include "base/os/windows_api.h"

// Behind windows.h, which it needs.
#include <shellapi.h>

namespace
{

unsigned __stdcall runCall(void* argument)
{
    static_cast<LbOs::CCarriedCall*>(argument)->Run();
    return 0;
}

/// A service or a session without desktop cannot show anything.
bool hasDesktop()
{
    USEROBJECTFLAGS flags = {};
    return GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof(flags), nullptr) != FALSE &&
           (flags.dwFlags & WSF_VISIBLE) != 0;
}

} // namespace

std::vector<std::wstring> LbOs::GetArguments(int /*count*/, const char* const* /*arguments*/)
{
    struct SFree
    {
        void operator()(wchar_t** memory) const { LocalFree(memory); }
    };
    int count = 0;
    const std::unique_ptr<wchar_t*[], SFree> arguments(CommandLineToArgvW(GetCommandLineW(), &count));
    return arguments == nullptr ? std::vector<std::wstring>()
                                : std::vector<std::wstring>(arguments.get(), arguments.get() + count);
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
    // Systems before Windows 10 lack the call.
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
    const int answer = hasDesktop() ? MessageBoxW(nullptr, text.c_str(), L"Assertion",
                                                  MB_ABORTRETRYIGNORE | MB_ICONERROR | MB_TASKMODAL | MB_SETFOREGROUND)
                                    : 0;
    switch (answer)
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

unsigned long LbOs::GetProcessNumber()
{
    return GetCurrentProcessId();
}

void LbOs::EndProcess(int status)
{
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
    // The system does not come back from that, but does not promise it either.
    std::abort();
}

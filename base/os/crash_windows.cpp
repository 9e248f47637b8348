#include "base/os/crash.h"

#include <csignal>

#include "base/os/windows/api.h"

namespace
{

/// What the run-time's own abort() ends with.
constexpr UINT c_AbortStatus = 3;

LONG CALLBACK endWithCode(EXCEPTION_POINTERS* exception)
{
    TerminateProcess(GetCurrentProcess(), exception->ExceptionRecord->ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

void endAborted(int /*signal*/)
{
    TerminateProcess(GetCurrentProcess(), c_AbortStatus);
}

} // namespace

void LbOs::EndSilentlyOnCrash()
{
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    SetUnhandledExceptionFilter(&endWithCode);
    // The run-time would show a message before it ends the process.
    std::signal(SIGABRT, &endAborted);
    // Stack that is left to the filter when all other is used up.
    ULONG guarantee = 65536;
    SetThreadStackGuarantee(&guarantee);
}

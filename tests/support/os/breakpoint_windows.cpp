#include "tests/support/os/breakpoint.h"

#include <atomic>

#include "base/os/windows/api.h"

namespace
{

std::atomic<LbOs::FBreakpointHandler> s_handler = nullptr;
PVOID s_registration = nullptr;

LONG NTAPI onException(EXCEPTION_POINTERS* exception)
{
    const LbOs::FBreakpointHandler handler = s_handler;
    if (handler == nullptr || exception->ExceptionRecord->ExceptionCode != EXCEPTION_BREAKPOINT)
    {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    handler();
    // The system reports the address of the one-byte instruction itself.
    ++exception->ContextRecord->Rip;
    return EXCEPTION_CONTINUE_EXECUTION;
}

} // namespace

void LbOs::SetBreakpointHandler(FBreakpointHandler handler, bool /*blocksSignals*/) noexcept
{
    s_handler = handler;
    if (handler != nullptr && s_registration == nullptr)
    {
        s_registration = AddVectoredExceptionHandler(1, onException);
    }
    else if (handler == nullptr && s_registration != nullptr)
    {
        RemoveVectoredExceptionHandler(s_registration);
        s_registration = nullptr;
    }
}

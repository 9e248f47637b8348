#include "base/os/interruption.h"

#include <atomic>

#include "base/os/windows/api.h"

namespace
{

std::atomic<LbOs::EInterruption> s_interruption = LbOs::EInterruption::None;

/// The system calls this handler on a thread of its own.
BOOL WINAPI handleRequest(DWORD event)
{
    const bool isUser = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    const LbOs::EInterruption interruption = isUser ? LbOs::EInterruption::User : LbOs::EInterruption::Terminate;
    LbOs::EInterruption none = LbOs::EInterruption::None;
    if (!s_interruption.compare_exchange_strong(none, interruption))
    {
        TerminateProcess(GetCurrentProcess(), static_cast<UINT>(LbOs::GetExitStatus(interruption)));
    }
    if (!isUser)
    {
        // The system ends the process as soon as the handler of such an event returns.
        Sleep(INFINITE);
    }
    return TRUE;
}

} // namespace

void LbOs::CatchInterruptions()
{
    SetConsoleCtrlHandler(&handleRequest, TRUE);
}

LbOs::EInterruption LbOs::GetInterruption() noexcept
{
    return s_interruption;
}

int LbOs::GetExitStatus(EInterruption interruption) noexcept
{
    constexpr int c_User = 130;
    constexpr int c_Terminate = 143;
    return interruption == EInterruption::None ? 0 : interruption == EInterruption::User ? c_User : c_Terminate;
}

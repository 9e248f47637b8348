/// The processes of the system.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/lbexport.h"

namespace LbOs
{

struct SProcess
{
    unsigned long number = 0;
    std::wstring executableName; ///< file name of the executable; empty when it is not for the caller to know
};

/// The processes at some moment of the call; empty when the system does not tell. Any thread.
LB_API std::vector<SProcess> ListProcesses();

/// The process that started this one, 0 when it has ended and another one has taken its place; none when the system
/// does not tell. Where the system keeps the number of one that has ended (Windows) it is given. Any thread.
LB_API std::optional<unsigned long> GetParentProcessId();

/// The file name of the executable of a process that runs now, as the process itself would name it; empty when there is
/// no such process or it cannot be asked. Any thread.
LB_API std::wstring GetProcessExecutableName(unsigned long number);

/// Ends a listed process at once, with exit status 0 where the system lets the caller choose. A failure has no effect:
/// the process has ended already, on Linux also when its number is another executable's now, or it is not the caller's
/// to end. Any thread.
LB_API void KillProcess(const SProcess& process);

} // namespace LbOs

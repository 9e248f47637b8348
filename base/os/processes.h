/// The processes of the system.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/lbexport.h"

namespace LbOs
{

struct SProcess
{
    unsigned long id = 0;
    std::wstring executableName; ///< file name of the executable; empty if the caller may not query it
};

/// The processes at one moment during the call; empty on failure. Callable from any thread.
LB_API std::vector<SProcess> ListProcesses();

/// The id of the process that started this one. On Linux 0 if the parent has ended and another process has adopted this
/// one; Windows keeps the id of an ended parent. Empty on failure. Callable from any thread.
LB_API std::optional<unsigned long> GetParentProcessId();

/// The file name of a running process's executable, as the process itself would name it; empty if the process does not
/// exist or cannot be queried. Callable from any thread.
LB_API std::wstring GetProcessExecutableName(unsigned long id);

/// Ends a listed process at once, with exit status 0 where the system lets the caller choose. Has no effect if the
/// process has ended already (on Linux also if another executable has its id now), or if the caller has no right to
/// end it. Callable from any thread.
LB_API void KillProcess(const SProcess& process);

/// The limit of processes and threads: the user's or, if smaller, that of the control group (version 2, only on Linux).
/// A very large number if there is no limit, as on Windows. Callable from any thread.
LB_API std::uint64_t GetProcessLimit() noexcept;

/// True if the user may start so few more processes and threads (fewer than 1024 on Linux) that optional ones could
/// keep necessary ones from starting. Counts existing processes and threads at most once, in the first call. False on
/// Windows. Callable from any thread.
LB_API bool HasFewProcesses() noexcept;

/// How many of `wanted` threads can be started now: starts them and ends them again. Callable from any thread.
LB_API unsigned CountStartableThreads(unsigned wanted);

} // namespace LbOs

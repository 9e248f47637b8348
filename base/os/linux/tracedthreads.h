/// Threads of another process under the control of this one. Internal to the Linux side.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include <sys/types.h>

namespace LbOs::Linux
{

/// In the order of debug information: rax, rdx, rcx, rbx, rsi, rdi, rbp, rsp, r8 to r15, rip.
using Registers = std::array<std::uint64_t, 17>;

inline constexpr std::size_t c_StackRegister = 7;
inline constexpr std::size_t c_InstructionRegister = 16;

using Deadline = std::chrono::steady_clock::time_point;

/// At most 64 threads of a process, stopped for as long as the object lives. Created, used and destroyed by one thread.
class CTracedThreads
{
public:
    /// `first` is stopped and listed before the others. Omits threads that do not stop in time, or that the current
    /// process may not trace.
    CTracedThreads(pid_t process, pid_t first, Deadline deadline);
    ~CTracedThreads();

    CTracedThreads(const CTracedThreads&) = delete;
    CTracedThreads& operator=(const CTracedThreads&) = delete;

    std::vector<pid_t> GetThreads() const;

    static std::optional<Registers> ReadRegisters(pid_t thread);

private:
    struct SThread
    {
        pid_t id = 0;
        int signal = 0; ///< the signal that was to be delivered when the thread stopped
        bool isStopped = false;
    };

    bool attachNew(pid_t process);
    bool attach(pid_t thread);
    void awaitStops(Deadline deadline);

    std::vector<SThread> m_threads;
};

/// Reads one word of another process's memory; empty if the address is invalid there.
std::optional<std::uint64_t> ReadWord(pid_t process, std::uint64_t address);

/// Registers as the kernel has stored them for a signal handler, in another process's memory.
std::optional<Registers> ReadSignalContext(pid_t process, std::uint64_t context);

} // namespace LbOs::Linux

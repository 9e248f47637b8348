#include "base/os/linux/tracedthreads.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include <sys/ptrace.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <ucontext.h>

namespace LbOs::Linux
{

namespace
{

constexpr std::size_t c_MostThreads = 64;

std::vector<pid_t> listThreads(pid_t process)
{
    std::vector<pid_t> threads;
    std::error_code error;
    std::filesystem::directory_iterator entry("/proc/" + std::to_string(process) + "/task", error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
    {
        threads.push_back(static_cast<pid_t>(std::strtol(entry->path().filename().c_str(), nullptr, 10)));
    }
    return threads;
}

bool read(pid_t process, std::uint64_t address, void* target, std::size_t size)
{
    const iovec local = {target, size};
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    const iovec remote = {reinterpret_cast<void*>(address), size};
    return process_vm_readv(process, &local, 1, &remote, 1, 0) == static_cast<ssize_t>(size);
}

} // namespace

CTracedThreads::CTracedThreads(pid_t process, pid_t first, Deadline deadline)
{
    if (attach(first))
    {
        awaitStops(deadline);
    }
    // A thread that is still running may start others.
    while (attachNew(process) && std::chrono::steady_clock::now() < deadline)
    {
        awaitStops(deadline);
    }
}

CTracedThreads::~CTracedThreads()
{
    // Only a stopped thread can be detached. Any other thread would stop later and stay stopped.
    constexpr std::chrono::milliseconds c_LongestWait(100);
    awaitStops(std::chrono::steady_clock::now() + c_LongestWait);
    for (const SThread& thread : m_threads)
    {
        ptrace(PTRACE_DETACH, thread.id, nullptr, static_cast<long>(thread.signal));
    }
}

bool CTracedThreads::attachNew(pid_t process)
{
    bool hasNew = false;
    for (const pid_t id : listThreads(process))
    {
        const bool isKnown = std::ranges::find(m_threads, id, &SThread::id) != m_threads.end();
        hasNew = (!isKnown && m_threads.size() < c_MostThreads && attach(id)) || hasNew;
    }
    return hasNew;
}

bool CTracedThreads::attach(pid_t thread)
{
    if (ptrace(PTRACE_SEIZE, thread, nullptr, nullptr) != 0)
    {
        return false;
    }
    ptrace(PTRACE_INTERRUPT, thread, nullptr, nullptr);
    m_threads.push_back({thread, 0, false});
    return true;
}

void CTracedThreads::awaitStops(Deadline deadline)
{
    for (SThread& thread : m_threads)
    {
        while (!thread.isStopped)
        {
            siginfo_t info = {};
            // Without WEXITED, so that other code can wait for the end of the process.
            const int waited = waitid(P_PID, static_cast<id_t>(thread.id), &info, WSTOPPED | WNOHANG | __WALL);
            if (waited != 0)
            {
                break;
            }
            thread.isStopped = info.si_pid == thread.id;
            // The upper bits are set if no signal has caused the stop.
            thread.signal = thread.isStopped && info.si_status >> 8 == 0 ? info.si_status : 0;
            if (thread.isStopped || std::chrono::steady_clock::now() > deadline)
            {
                break;
            }
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        }
    }
}

std::vector<pid_t> CTracedThreads::GetThreads() const
{
    std::vector<pid_t> threads;
    for (const SThread& thread : m_threads)
    {
        if (thread.isStopped)
        {
            threads.push_back(thread.id);
        }
    }
    return threads;
}

std::optional<Registers> CTracedThreads::ReadRegisters(pid_t thread)
{
    user_regs_struct all = {};
    if (ptrace(PTRACE_GETREGS, thread, nullptr, &all) != 0)
    {
        return std::nullopt;
    }
    return Registers{all.rax, all.rdx, all.rcx, all.rbx, all.rsi, all.rdi, all.rbp, all.rsp, all.r8,
                     all.r9,  all.r10, all.r11, all.r12, all.r13, all.r14, all.r15, all.rip};
}

std::optional<std::uint64_t> ReadWord(pid_t process, std::uint64_t address)
{
    std::uint64_t word = 0;
    return read(process, address, &word, sizeof(word)) ? std::optional(word) : std::nullopt;
}

std::optional<Registers> ReadSignalContext(pid_t process, std::uint64_t context)
{
    constexpr std::size_t c_Order[] = {REG_RAX, REG_RDX, REG_RCX, REG_RBX, REG_RSI, REG_RDI, REG_RBP, REG_RSP, REG_R8,
                                       REG_R9,  REG_R10, REG_R11, REG_R12, REG_R13, REG_R14, REG_R15, REG_RIP};
    mcontext_t machine = {};
    if (!read(process, context + offsetof(ucontext_t, uc_mcontext), &machine, sizeof(machine)))
    {
        return std::nullopt;
    }
    Registers registers = {};
    std::ranges::transform(c_Order, registers.begin(),
                           [&machine](std::size_t index) { return static_cast<std::uint64_t>(machine.gregs[index]); });
    return registers;
}

} // namespace LbOs::Linux

#include "base/os/threadfreeze.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include "base/os/linux/cancellation.h"
#include "base/os/linux/ownthreads.h"

// Each frozen thread waits in the handler of a real-time signal until Thaw increments the generation. A signal carries
// the generation and the thread's slot, so that it does nothing if it arrives after its freeze was abandoned.

namespace
{

namespace Linux = LbOs::Linux;

constexpr std::size_t c_SlotCount = 8192;
constexpr unsigned c_SlotBits = 16;

/// The state of a thread that has not answered yet: an odd number, so never the address of a context.
constexpr std::uint64_t toPending(std::uint32_t generation) noexcept
{
    return (std::uint64_t{generation} << 1U) | 1U;
}

struct SSlot
{
    pid_t thread = 0;
    std::atomic<std::uint64_t> state =
        0; ///< pending, or address of the frozen thread's context, or 0 when it has ended
};

// Static, because a late signal may access them at any time. Constant-initialised, so that a process start does not
// touch their pages.
constinit SSlot s_slots[c_SlotCount];
std::atomic<std::uint32_t> s_generation = 0;
std::atomic<std::uint32_t> s_answerCount = 0;
int s_signal = 0;

void waitOn(std::atomic<std::uint32_t>& number, std::uint32_t expected, const timespec* timeout) noexcept
{
    syscall(SYS_futex, &number, FUTEX_WAIT_PRIVATE, expected, timeout, nullptr, 0);
}

void wakeAll(std::atomic<std::uint32_t>& number) noexcept
{
    constexpr int c_All = 0x7FFFFFFF;
    syscall(SYS_futex, &number, FUTEX_WAKE_PRIVATE, c_All, nullptr, nullptr, 0);
}

void stopHere(int /*signal*/, siginfo_t* information, void* context)
{
    const int savedError = errno;
    const auto value = reinterpret_cast<std::uint64_t>(information->si_value.sival_ptr);
    const std::size_t slot = value & ((1U << c_SlotBits) - 1U);
    const auto generation = static_cast<std::uint32_t>(value >> c_SlotBits);
    std::uint64_t expected = toPending(generation);
    if (information->si_code == SI_QUEUE && information->si_pid == getpid() && slot < c_SlotCount &&
        s_slots[slot].state.compare_exchange_strong(expected, reinterpret_cast<std::uint64_t>(context)))
    {
        ++s_answerCount;
        wakeAll(s_answerCount);
        while (s_generation == generation)
        {
            waitOn(s_generation, generation, nullptr);
        }
    }
    errno = savedError;
}

bool sendStop(pid_t thread, std::size_t slot, std::uint32_t generation) noexcept
{
    siginfo_t information = {};
    information.si_signo = s_signal;
    information.si_code = SI_QUEUE;
    information.si_pid = getpid();
    information.si_uid = getuid();
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    information.si_value.sival_ptr = reinterpret_cast<void*>((std::uint64_t{generation} << c_SlotBits) | slot);
    return syscall(SYS_rt_tgsigqueueinfo, getpid(), thread, s_signal, &information) == 0;
}

/// Time since construction or Restart. Not affected by signals that interrupt waits.
class CStopwatch
{
public:
    std::int64_t GetMilliseconds() const noexcept { return now() - m_begin; }
    void Restart() noexcept { m_begin = now(); }

private:
    static std::int64_t now() noexcept
    {
        timespec time = {};
        clock_gettime(CLOCK_MONOTONIC, &time);
        return time.tv_sec * std::int64_t{1000} + time.tv_nsec / 1'000'000;
    }

    std::int64_t m_begin = now();
};

constexpr std::uint64_t toMask(int signal) noexcept
{
    return std::uint64_t{1} << static_cast<unsigned>(signal - 1);
}

bool isOurs(const struct sigaction& action) noexcept
{
    return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == stopHere;
}

/// Reserves an unused signal that is not in `blocked`. The handler stays installed, because a late signal would
/// otherwise end the process.
bool takeSignalExcept(std::uint64_t blocked) noexcept
{
    for (int signal = SIGRTMAX; signal >= SIGRTMIN; --signal)
    {
        struct sigaction action = {};
        const bool isBlocked = (blocked & toMask(signal)) != 0;
        if (isBlocked || sigaction(signal, nullptr, &action) != 0)
        {
            continue;
        }
        if (!isOurs(action) && action.sa_handler != SIG_DFL)
        {
            continue;
        }
        action.sa_sigaction = stopHere;
        action.sa_flags = SA_SIGINFO | SA_RESTART;
        sigfillset(&action.sa_mask);
        if (sigaction(signal, &action, nullptr) == 0)
        {
            s_signal = signal;
            return true;
        }
    }
    return false;
}

/// Avoids signals that a thread blocks, because it or another thread may wait for them. Avoids a signal whose handler
/// was replaced, because that may happen again.
bool takeSignal() noexcept
{
    struct sigaction action = {};
    if (s_signal != 0 && sigaction(s_signal, nullptr, &action) == 0 && isOurs(action))
    {
        return true;
    }
    std::uint64_t blocked = Linux::ReadBlockedSignals(static_cast<pid_t>(syscall(SYS_gettid)));
    if (s_signal != 0)
    {
        blocked |= toMask(s_signal);
        s_signal = 0;
    }
    Linux::ForOtherThreads([&blocked](pid_t thread) {
        blocked |= Linux::ReadBlockedSignals(thread);
        return true;
    });
    return takeSignalExcept(blocked) || takeSignalExcept(0);
}

/// The slots in use during a freeze.
class CFreeze
{
public:
    explicit CFreeze(std::uint32_t generation) noexcept : m_generation(generation) {}

    /// Repeats until the list of threads has no new thread and all have answered.
    bool Run(unsigned timeoutMs) noexcept
    {
        CStopwatch refused;
        while (true)
        {
            const std::size_t before = m_count;
            m_isRefused = false;
            if (!stopNewThreads() || !awaitAnswers(timeoutMs))
            {
                return false;
            }
            if (m_count == before && !m_isRefused)
            {
                return true;
            }
            if (m_count != before)
            {
                refused.Restart();
            }
            if (refused.GetMilliseconds() > timeoutMs)
            {
                return false;
            }
            if (m_isRefused)
            {
                waitOn(s_answerCount, s_answerCount, &c_Slice);
            }
        }
    }

    std::size_t GetCount() const noexcept { return m_count; }

private:
    static constexpr timespec c_Slice = {0, 10'000'000};

    bool stopNewThreads() noexcept
    {
        return Linux::ForOtherThreads([this](pid_t thread) { return isKnown(thread) || stop(thread); });
    }

    bool isKnown(pid_t thread) const noexcept
    {
        return std::any_of(s_slots, s_slots + m_count, [thread](const SSlot& slot) { return slot.thread == thread; });
    }

    bool stop(pid_t thread) noexcept
    {
        if (m_count == c_SlotCount)
        {
            return false;
        }
        SSlot& slot = s_slots[m_count];
        slot.thread = thread;
        slot.state = toPending(m_generation);
        if (!sendStop(thread, m_count, m_generation))
        {
            slot.state = 0;
            if (errno == EAGAIN)
            {
                // The system's signal queue is full; the next pass finds the thread again.
                m_isRefused = true;
                return true;
            }
            if (errno != ESRCH || !Linux::HasEnded(thread))
            {
                return false;
            }
        }
        ++m_count;
        return true;
    }

    std::size_t countPending() const noexcept
    {
        return static_cast<std::size_t>(std::count_if(
            s_slots, s_slots + m_count, [this](const SSlot& slot) { return slot.state == toPending(m_generation); }));
    }

    void dropEnded() noexcept
    {
        for (std::size_t index = 0; index < m_count; ++index)
        {
            if (s_slots[index].state == toPending(m_generation) && Linux::HasEnded(s_slots[index].thread))
            {
                s_slots[index].state = 0;
            }
        }
    }

    /// Each answer restarts the time-out: many threads on few processors may need longer in total.
    bool awaitAnswers(unsigned timeoutMs) noexcept
    {
        CStopwatch waited;
        while (true)
        {
            const std::uint32_t answers = s_answerCount;
            const std::size_t pending = countPending();
            if (pending == 0)
            {
                return true;
            }
            waitOn(s_answerCount, answers, &c_Slice);
            if (s_answerCount != answers)
            {
                waited.Restart();
                continue;
            }
            dropEnded();
            if (waited.GetMilliseconds() > timeoutMs)
            {
                return false;
            }
        }
    }

    const std::uint32_t m_generation;
    std::size_t m_count = 0;
    bool m_isRefused = false;
};

greg_t& instructionPointer(std::uint64_t context) noexcept
{
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    return reinterpret_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP];
}

} // namespace

bool LbOs::CThreadFreezer::Freeze(unsigned timeoutMs) noexcept
{
    Thaw();
    const Linux::CCancellationOff cancellationOff;
    if (!takeSignal())
    {
        return false;
    }
    CFreeze freeze(s_generation);
    m_isFrozen = true;
    const bool isGood = freeze.Run(timeoutMs);
    m_count = freeze.GetCount();
    if (!isGood)
    {
        Thaw();
        // The next freeze reserves another signal, because a thread may block only this one.
        s_signal = 0;
    }
    return isGood;
}

void LbOs::CThreadFreezer::Thaw() noexcept
{
    if (m_isFrozen)
    {
        m_isFrozen = false;
        m_count = 0;
        ++s_generation;
        wakeAll(s_generation);
    }
}

std::uintptr_t LbOs::CThreadFreezer::GetInstructionPointer(std::size_t thread) const noexcept
{
    const std::uint64_t context = s_slots[thread].state;
    return context == 0 ? 0 : static_cast<std::uintptr_t>(instructionPointer(context));
}

bool LbOs::CThreadFreezer::SetInstructionPointer(std::size_t thread, std::uintptr_t address) noexcept
{
    const std::uint64_t context = s_slots[thread].state;
    if (context == 0)
    {
        return false;
    }
    instructionPointer(context) = static_cast<greg_t>(address);
    return true;
}

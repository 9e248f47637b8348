#include "base/os/threadfreeze.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>

#include <dirent.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

// Each frozen thread sits in the handler of a real-time signal until the generation changes. A signal carries the
// generation and the thread's slot, so that one that arrives after its freeze was given up does nothing.

namespace
{

constexpr std::size_t c_SlotCount = 8192;
constexpr unsigned c_SlotBits = 16;

/// The thread has not answered yet: an odd number, which no address of a context is.
constexpr std::uint64_t toPending(std::uint32_t generation) noexcept
{
    return (std::uint64_t{generation} << 1U) | 1U;
}

struct SSlot
{
    pid_t thread;
    std::atomic<std::uint64_t> state; ///< pending, or address of the frozen thread's context, or 0 when it has ended
};

// Of static life, since a late signal may look at them at any time.
SSlot s_slots[c_SlotCount];
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

/// A signal that nobody uses; it keeps its handler for ever, since a late one would end the process otherwise.
bool takeSignal() noexcept
{
    if (s_signal != 0)
    {
        return true;
    }
    for (int signal = SIGRTMAX; signal >= SIGRTMIN; --signal)
    {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL)
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

pid_t parseNumber(const char* text) noexcept
{
    pid_t number = 0;
    for (; *text >= '0' && *text <= '9'; ++text)
    {
        number = number * 10 + (*text - '0');
    }
    return number;
}

/// Appends a thread's number to the path of the list of threads, and a file's name.
void makeStatPath(char (&path)[64], pid_t thread) noexcept
{
    char digits[16];
    std::size_t count = 0;
    for (; thread > 0; thread /= 10)
    {
        digits[count++] = static_cast<char>('0' + thread % 10);
    }
    char* end = std::copy_n("/proc/self/task/", 16, path);
    end = std::reverse_copy(digits, digits + count, end);
    std::copy_n("/stat", 6, end);
}

/// True for a thread that will never run again: gone, or the first one after it left the process to the others.
bool hasEnded(pid_t thread) noexcept
{
    char path[64];
    makeStatPath(path, thread);
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
    {
        return true;
    }
    char text[512];
    const ssize_t length = read(file, text, sizeof(text));
    close(file);
    if (length <= 0)
    {
        return true;
    }
    // "number (name) state ...", and a name may hold brackets.
    const char* const end = text + length;
    const char* name = end;
    while (name > text && name[-1] != ')')
    {
        --name;
    }
    return name > text && name + 1 < end && (name[1] == 'Z' || name[1] == 'X');
}

/// The slots in use during one freeze.
class CFreeze
{
public:
    explicit CFreeze(std::uint32_t generation) noexcept : m_generation(generation) {}

    /// Until a look at the list of threads finds no new one and all have answered.
    bool Run(unsigned timeoutMs) noexcept
    {
        while (true)
        {
            const std::size_t before = m_count;
            if (!stopNewThreads() || !awaitAnswers(timeoutMs))
            {
                return false;
            }
            if (m_count == before)
            {
                return true;
            }
        }
    }

    std::size_t GetCount() const noexcept { return m_count; }

private:
    struct SDirectoryEntry
    {
        std::uint64_t number;
        std::int64_t offset;
        std::uint16_t length;
        std::uint8_t type;
        char name[1];
    };

    bool stopNewThreads() noexcept
    {
        const int directory = open("/proc/self/task", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (directory < 0)
        {
            return false;
        }
        alignas(SDirectoryEntry) char buffer[4096];
        bool isDone = false;
        bool isGood = true;
        while (isGood && !isDone)
        {
            const long length = syscall(SYS_getdents64, directory, buffer, sizeof(buffer));
            isDone = length == 0;
            isGood = length >= 0 && stopThreadsOf(buffer, length);
        }
        close(directory);
        return isGood;
    }

    bool stopThreadsOf(const char* buffer, long length) noexcept
    {
        const auto self = static_cast<pid_t>(syscall(SYS_gettid));
        for (long position = 0; position < length;)
        {
            const auto* const entry = reinterpret_cast<const SDirectoryEntry*>(buffer + position);
            position += entry->length;
            const pid_t thread = parseNumber(entry->name);
            if (thread != 0 && thread != self && !isKnown(thread) && !stop(thread))
            {
                return false;
            }
        }
        return true;
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
            // Ended meanwhile, or too many signals under way in the system.
            if (errno != ESRCH)
            {
                return false;
            }
            slot.state = 0;
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
            if (s_slots[index].state == toPending(m_generation) && hasEnded(s_slots[index].thread))
            {
                s_slots[index].state = 0;
            }
        }
    }

    /// The time counts anew with each answer: many threads on few processors may need longer together.
    bool awaitAnswers(unsigned timeoutMs) noexcept
    {
        constexpr unsigned c_SliceMs = 10;
        constexpr timespec c_Slice = {0, c_SliceMs * 1'000'000L};
        unsigned waitedMs = 0;
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
                waitedMs = 0;
                continue;
            }
            dropEnded();
            waitedMs += c_SliceMs;
            if (waitedMs > timeoutMs)
            {
                return false;
            }
        }
    }

    const std::uint32_t m_generation;
    std::size_t m_count = 0;
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

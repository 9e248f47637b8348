#include "base/os/crash.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fstream>

#include <sys/mman.h>
#include <sys/resource.h>
#include <ucontext.h>
#include <unistd.h>

#include "base/lbencoding.h"
#include "base/os/linux/crashplace.h"
#include "base/os/linux/rawcalls.h"

/// Defined only if a sanitizer is present.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace
{

using namespace LbOs;

/// Which arrivals of a signal CCrashHandler reports.
enum class EReported
{
    Always,
    FromInside, ///< if the process itself or its timer or access has caused the signal
    Never
};

struct SSignal
{
    int number;
    SCrashKind kind;
    EReported reported;
};

/// All signals that end a process by default, except the real-time signals.
constexpr SSignal c_Signals[] = {
    {SIGSEGV, {"SIGSEGV", "unzulässiger Speicherzugriff"}, EReported::Always},
    {SIGBUS, {"SIGBUS", "Zugriff auf Speicher, hinter dem nichts steht"}, EReported::Always},
    {SIGFPE, {"SIGFPE", "unzulässige Rechenoperation"}, EReported::Always},
    {SIGILL, {"SIGILL", "unzulässiger Befehl"}, EReported::Always},
    {SIGABRT, {"SIGABRT", "Abbruch durch das Programm selbst"}, EReported::Always},
    {SIGTRAP, {"SIGTRAP", "Haltepunkt"}, EReported::Always},
    {SIGSYS, {"SIGSYS", "unzulässiger Systemaufruf"}, EReported::Always},
    {SIGKILL, {"SIGKILL", "von außen beendet"}, EReported::Never},
    {SIGTERM, {"SIGTERM", "Aufforderung, sich zu beenden"}, EReported::Never},
    {SIGINT, {"SIGINT", "Unterbrechung"}, EReported::Never},
    {SIGQUIT, {"SIGQUIT", "Unterbrechung"}, EReported::Never},
    {SIGHUP, {"SIGHUP", "Ende der Sitzung"}, EReported::Never},
    {SIGPIPE, {"SIGPIPE", "Schreiben ohne Leser"}, EReported::FromInside},
    {SIGALRM, {"SIGALRM", "abgelaufener Wecker"}, EReported::FromInside},
    {SIGVTALRM, {"SIGVTALRM", "abgelaufener Wecker"}, EReported::FromInside},
    {SIGPROF, {"SIGPROF", "abgelaufener Wecker"}, EReported::FromInside},
    {SIGXCPU, {"SIGXCPU", "Grenze der Rechenzeit"}, EReported::FromInside},
    {SIGXFSZ, {"SIGXFSZ", "Grenze der Dateigröße"}, EReported::FromInside},
    {SIGUSR1, {"SIGUSR1", "von einem Programm gesendet"}, EReported::FromInside},
    {SIGUSR2, {"SIGUSR2", "von einem Programm gesendet"}, EReported::FromInside},
    {SIGIO, {"SIGIO", "bereite Datei"}, EReported::FromInside},
    {SIGSTKFLT, {"SIGSTKFLT", "von einem Programm gesendet"}, EReported::FromInside},
    {SIGPWR, {"SIGPWR", "Ausfall der Stromversorgung"}, EReported::Never},
};

const SSignal* findSignal(std::int64_t number)
{
    for (const SSignal& signal : c_Signals)
    {
        if (signal.number == number)
        {
            return &signal;
        }
    }
    return nullptr;
}

/// Name and meaning; empty for an unknown signal.
std::string nameSignal(std::int64_t number)
{
    if (const SSignal* const signal = findSignal(number))
    {
        return std::string(signal->kind.name) + ", " + signal->kind.meaning;
    }
    // The number of the first real-time signal depends on the C library.
    const std::int64_t index = number - SIGRTMIN;
    if (index < 0 || number > SIGRTMAX)
    {
        return {};
    }
    std::string name = "SIGRTMIN";
    if (index != 0)
    {
        name.append("+").append(std::to_string(index));
    }
    return name.append(", ").append("von einem Programm gesendet");
}

std::atomic<CrashReport> s_report = nullptr;
std::atomic<long> s_owner = 0;
std::atomic<bool> s_isReporting = false;

/// Sends the signal again with its default action, which ends the process as soon as the handler returns: with the
/// status of the crash and, if enabled, a dump.
void endBySignal(int signal)
{
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    sigaction(signal, &action, nullptr);
    Linux::Call(SYS_tgkill, Linux::Call(SYS_getpid), Linux::Call(SYS_gettid), signal);
}

/// True if the accessed memory is near the stack pointer. A single access gives no better evidence of a stack overflow.
bool isNearStack(std::uintptr_t target, std::uintptr_t stack)
{
    constexpr std::uintptr_t c_Near = 65536;
    return target + c_Near > stack && target < stack + c_Near;
}

SCrash describe(const SSignal& signal, const siginfo_t& info, const ucontext_t& context)
{
    SCrash crash;
    crash.kind = signal.kind;
    crash.code = static_cast<std::uint32_t>(signal.number);
    crash.address = static_cast<std::uintptr_t>(context.uc_mcontext.gregs[REG_RIP]);
    crash.thread = static_cast<std::uint64_t>(Linux::Call(SYS_gettid));
    crash.context = reinterpret_cast<std::uint64_t>(&context);
    Linux::FindCrashPlace(crash.address, crash.module, crash.offset);
    // A signal sent by a process contains the sender's id instead of an address.
    if ((signal.number == SIGSEGV || signal.number == SIGBUS) && info.si_code > 0)
    {
        crash.target = reinterpret_cast<std::uintptr_t>(info.si_addr);
        if (isNearStack(*crash.target, static_cast<std::uintptr_t>(context.uc_mcontext.gregs[REG_RSP])))
        {
            crash.kind.meaning = "unzulässiger Speicherzugriff am Ende des Stapels, wohl ein Stapelüberlauf";
        }
    }
    return crash;
}

/// True if the current process has caused the signal: by sending it, by its timer, or by a system call.
bool isFromInside(const siginfo_t& info)
{
    // For SIGPIPE and SIGXFSZ, the kernel names the process that made the call as the sender.
    const bool hasSender = info.si_code == SI_USER || info.si_code == SI_TKILL || info.si_code == SI_QUEUE;
    return hasSender ? info.si_pid == Linux::Call(SYS_getpid) : info.si_code > 0 || info.si_code == SI_TIMER;
}

/// Makes it possible to write the report to a file.
void liftFileSizeLimit()
{
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_FSIZE, &limit);
}

void onSignal(int number, siginfo_t* info, void* context)
{
    const int error = errno;
    const CrashReport report = s_report.load();
    const SSignal& signal = *findSignal(number);
    const bool isReported = signal.reported == EReported::Always || isFromInside(*info);
    if (report != nullptr && isReported && Linux::Call(SYS_getpid) == s_owner.load())
    {
        while (s_isReporting.exchange(true))
        {
            // Another thread is already reporting a crash and will end the process.
            Linux::Call(SYS_pause);
        }
        if (number == SIGXFSZ)
        {
            liftFileSizeLimit();
        }
        report(describe(signal, *info, *static_cast<const ucontext_t*>(context)));
    }
    endBySignal(number);
    errno = error;
}

bool isOurs(const struct sigaction& action)
{
    return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == &onSignal;
}

void takeSignals()
{
    for (const SSignal& signal : c_Signals)
    {
        struct sigaction action = {};
        // Signals that the program that started this process has set to be ignored stay ignored.
        if (signal.reported == EReported::Never || sigaction(signal.number, nullptr, &action) != 0 ||
            (action.sa_flags & SA_SIGINFO) != 0 || action.sa_handler != SIG_DFL)
        {
            continue;
        }
        action.sa_sigaction = &onSignal;
        action.sa_flags = SA_SIGINFO | SA_ONSTACK;
        // Blocks all signals during the handler, so that a crash in it ends the process.
        sigfillset(&action.sa_mask);
        sigaction(signal.number, &action, nullptr);
    }
}

void releaseSignals()
{
    for (const SSignal& signal : c_Signals)
    {
        struct sigaction action = {};
        if (sigaction(signal.number, nullptr, &action) == 0 && isOurs(action))
        {
            action = {};
            action.sa_handler = SIG_DFL;
            sigaction(signal.number, &action, nullptr);
        }
    }
}

/// Called when a sanitizer has written its report, just before it ends the process.
void onDeath()
{
    const CrashReport report = s_report.load();
    if (report != nullptr && Linux::Call(SYS_getpid) == s_owner.load() && !s_isReporting.exchange(true))
    {
        SCrash crash;
        crash.kind = {"Sanitizer", "siehe dessen Bericht"};
        report(crash);
    }
}

/// A second descriptor for crash texts, besides standard error; negative if there is none.
std::atomic<int> s_copy = -1;

void writeAll(int file, std::string_view text) noexcept
{
    while (!text.empty())
    {
        const long written = Linux::Call(SYS_write, file, text.data(), text.size());
        if (written <= 0 && errno != EINTR)
        {
            return;
        }
        text.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
    }
}

} // namespace

void LbOs::EndSilentlyOnCrash()
{
    // The system ends a crashed process by itself, but writing a dump may take long. A limit of 1 byte is too small for
    // any file. With any other limit, the system might pass the dump to a program.
    rlimit limit = {};
    getrlimit(RLIMIT_CORE, &limit);
    limit.rlim_cur = limit.rlim_max == 0 ? 0 : 1;
    setrlimit(RLIMIT_CORE, &limit);
}

std::wstring LbOs::DescribeExitStatus(std::int64_t exitStatus)
{
    if (exitStatus >= 0)
    {
        return L"Status " + std::to_wstring(exitStatus);
    }
    const std::string name = nameSignal(-exitStatus);
    return L"Signal " + std::to_wstring(-exitStatus) + LbEncoding::FromUtf8(name.empty() ? name : " (" + name + ")");
}

std::int64_t LbOs::GetCrashStatus(std::uint32_t code) noexcept
{
    return -std::int64_t{code};
}

bool LbOs::MayBeAbort(std::int64_t exitStatus) noexcept
{
    return exitStatus == -SIGABRT;
}

bool LbOs::MayBeMemoryKill(std::int64_t exitStatus) noexcept
{
    return exitStatus == -SIGKILL;
}

std::uint64_t LbOs::CountMemoryKills()
{
    std::ifstream counters("/proc/vmstat");
    std::string name;
    std::uint64_t count = 0;
    while (counters >> name >> count)
    {
        if (name == "oom_kill")
        {
            return count;
        }
    }
    return 0;
}

LbOs::CCrashHandler::CCrashHandler(CrashReport report)
{
    s_owner = Linux::Call(SYS_getpid);
    s_report = report;
    takeSignals();
    if (__sanitizer_set_death_callback != nullptr)
    {
        __sanitizer_set_death_callback(&onDeath);
    }
}

LbOs::CCrashHandler::~CCrashHandler()
{
    releaseSignals();
    s_report = nullptr;
}

LbOs::CCrashStack::CCrashStack()
{
    constexpr std::size_t c_Size = 65536;
    stack_t present = {};
    // Keeps an alternative stack that a sanitizer or the code that started the thread has set.
    if (sigaltstack(nullptr, &present) != 0 || (present.ss_flags & SS_DISABLE) == 0)
    {
        return;
    }
    void* const memory = mmap(nullptr, c_Size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    const stack_t stack = {memory, 0, c_Size};
    if (memory != MAP_FAILED && sigaltstack(&stack, nullptr) == 0)
    {
        m_memory = memory;
        m_size = c_Size;
    }
}

LbOs::CCrashStack::~CCrashStack()
{
    stack_t present = {};
    if (m_memory == nullptr)
    {
        return;
    }
    if (sigaltstack(nullptr, &present) == 0 && present.ss_sp == m_memory)
    {
        present = {};
        present.ss_flags = SS_DISABLE;
        sigaltstack(&present, nullptr);
    }
    munmap(m_memory, m_size);
}

void LbOs::WriteCrashText(std::string_view text) noexcept
{
    writeAll(STDERR_FILENO, text);
    if (const int copy = s_copy; copy >= 0)
    {
        writeAll(copy, text);
    }
}

void LbOs::CopyCrashTexts(FileHandle file) noexcept
{
    s_copy = static_cast<int>(file);
}

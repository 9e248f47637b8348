#include "base/os/childprocess.h"

#include <cerrno>
#include <csignal>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/os/descriptor_linux.h"
#include "base/os/files.h"
#include "base/os/keeper_linux.h"
#include "base/os/openfiles_linux.h"
#include "base/os/processfile_linux.h"
#include "base/os/processtree_linux.h"

namespace LbOs
{

struct CChildProcess::SState
{
    pid_t process = -1;
    Linux::CProcessFile file;
    Linux::SKeptGroup* group = nullptr; ///< null when nobody keeps it
    bool endsWithOwner = true;
    bool isTerminated = false;
    bool isReaped = false;
    std::optional<std::int64_t> exitStatus;

    /// How the process has ended, if it has; none when others have waited for it, or the system has forgotten it. From
    /// then on its number may be another's.
    std::optional<siginfo_t> Look(int options);

    bool WaitForEnd(std::uint32_t milliseconds);

    /// Of a process that has ended.
    void Reap();

    /// By force, with all that it has started where `isTreeEnded`.
    void End(bool isTreeEnded);
};

namespace
{

constexpr int c_CannotStart = 127;

/// All that the child needs, made before it exists: between its birth and its program it may only make system calls.
struct SStart
{
    std::string program;
    std::vector<std::string> words;
    std::vector<char*> arguments; ///< the words as the system takes them
    std::string workingDirectory;
    bool isSilent = false;
    bool isSearched = false; ///< the program's name is to be looked up
    Linux::SKeptGroup* group = nullptr;
    pid_t owner = 0;
    sigset_t signals = {}; ///< blocked in the caller
};

/// A path is meant from the caller's folder, wherever the child works; a bare name is looked up. No program when that
/// folder is not known.
std::wstring fromHere(const std::wstring& program)
{
    if (program.find(L'/') == std::wstring::npos || IsAbsolutePath(program))
    {
        return program;
    }
    const std::wstring here = GetWorkingDirectory();
    return here.empty() ? here : here + L"/" + program;
}

SStart prepare(const SChildOptions& options)
{
    SStart start;
    const std::vector<std::wstring> words = LbCommandLine::Split(options.commandLine);
    for (const std::wstring& word : words)
    {
        start.words.push_back(LbEncoding::ToNative(word));
    }
    for (std::string& word : start.words)
    {
        start.arguments.push_back(word.data());
    }
    start.arguments.push_back(nullptr);
    start.isSearched = options.program.empty();
    start.program = LbEncoding::ToNative(fromHere(!start.isSearched ? options.program
                                                  : words.empty()   ? std::wstring()
                                                                    : words.front()));
    start.workingDirectory = LbEncoding::ToNative(options.workingDirectory);
    start.isSilent = options.isSilent;
    start.owner = getpid();
    return start;
}

/// Nothing behind standard input and, with `isSilent`, standard output and error. The child's group is none that a
/// terminal reads for: to read there would stop it, and nobody would make it go on.
bool redirectToNothing(bool isSilent)
{
    const int nothing = open("/dev/null", O_RDWR);
    if (nothing < 0)
    {
        return false;
    }
    for (int standard = 0; standard <= (isSilent ? 2 : 0); ++standard)
    {
        dup2(nothing, standard);
    }
    if (nothing > 2)
    {
        close(nothing);
    }
    return true;
}

/// The handlers of the caller are not the child's: they must not run in memory that the two share.
void resetSignals(const sigset_t& blocked)
{
    for (int signal = 1; signal < NSIG; ++signal)
    {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN)
        {
            action = {};
            action.sa_handler = SIG_DFL;
            sigaction(signal, &action, nullptr);
        }
    }
    sigprocmask(SIG_SETMASK, &blocked, nullptr);
}

/// The child's way to its program.
[[noreturn]] void becomeProgram(const SStart& start, int failureFile)
{
    setpgid(0, 0);
    if (start.group != nullptr)
    {
        Linux::EnterKeptGroup(*start.group);
        Linux::KeepDescendants();
        // An owner that has ended before this had a keeper that did not know the group.
        if (getppid() != start.owner)
        {
            _exit(c_CannotStart);
        }
    }
    resetSignals(start.signals);
    const bool isReady = redirectToNothing(start.isSilent) &&
                         (start.workingDirectory.empty() || chdir(start.workingDirectory.c_str()) == 0);
    if (isReady)
    {
        Linux::RestoreOpenFileLimit();
        const auto execute = start.isSearched ? &execvp : &execv;
        execute(start.program.c_str(), start.arguments.data());
    }
    const char failed = 1;
    [[maybe_unused]] const auto written = write(failureFile, &failed, 1);
    _exit(c_CannotStart);
}

/// As fork(), but the memory is shared and the caller stands still until the child has become its program: copying the
/// tables of a large process would take longer than all else.
pid_t startShared(const SStart& start, int failureFile)
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    const pid_t process = vfork();
#pragma GCC diagnostic pop
    if (process == 0)
    {
        becomeProgram(start, failureFile);
    }
    return process;
}

void reap(pid_t process)
{
    while (waitpid(process, nullptr, 0) < 0 && errno == EINTR)
    {
    }
}

/// Number of a process that runs its program; -1 on failure.
pid_t startProcess(SStart& start)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
    {
        return -1;
    }
    const Linux::CDescriptor readEnd(ends[0]);
    Linux::CDescriptor writeEnd = Linux::AboveStandard(ends[1]);
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &start.signals);
    const pid_t process = startShared(start, writeEnd.Get());
    pthread_sigmask(SIG_SETMASK, &start.signals, nullptr);
    writeEnd.Reset();
    char failed = 0;
    if (process > 0 && Linux::Retry([&] { return read(readEnd.Get(), &failed, 1); }) != 0)
    {
        reap(process);
        return -1;
    }
    return process;
}

std::int64_t toExitStatus(const siginfo_t& end)
{
    return end.si_code == CLD_EXITED ? end.si_status : -std::int64_t{end.si_status};
}

/// The process ends, wherever it has gone, and what is left of its group. Only before it is reaped: then its number may
/// become another's.
void killGroup(pid_t process)
{
    kill(-process, SIGKILL);
    kill(process, SIGKILL);
}

} // namespace

std::optional<siginfo_t> CChildProcess::SState::Look(int options)
{
    siginfo_t end = {};
    file.Assert(process);
    // Where there can be no descriptor, the number has to do.
    const idtype_t kind = file.Get() < 0 ? P_PID : P_PIDFD;
    const auto name = static_cast<id_t>(file.Get() < 0 ? process : file.Get());
    const bool isKnown = Linux::Retry([&] { return waitid(kind, name, &end, WEXITED | options); }) == 0;
    return isKnown ? std::optional(end) : std::nullopt;
}

bool CChildProcess::SState::WaitForEnd(std::uint32_t milliseconds)
{
    constexpr std::uint32_t c_LookInterval = 1;
    file.Assert(process);
    if (file.Get() >= 0)
    {
        return Linux::WaitReadable({file.Get()}, milliseconds) == 0;
    }
    for (std::uint32_t waited = 0; waited <= milliseconds; ++waited)
    {
        if (const std::optional<siginfo_t> end = Look(WNOHANG | WNOWAIT); !end || end->si_pid != 0)
        {
            return true;
        }
        Linux::WaitReadable({}, waited < milliseconds ? c_LookInterval : 0);
    }
    return false;
}

void CChildProcess::SState::Reap()
{
    const std::optional<siginfo_t> end = Look(WNOWAIT);
    if (end && endsWithOwner)
    {
        killGroup(process);
    }
    Linux::ReleaseKeptGroup(std::exchange(group, nullptr));
    if (end)
    {
        Look(0);
        exitStatus = toExitStatus(*end);
    }
    isReaped = true;
}

void CChildProcess::SState::End(bool isTreeEnded)
{
    if (isReaped || std::exchange(isTerminated, true))
    {
        return;
    }
    if (!Look(WNOHANG | WNOWAIT))
    {
        Reap();
        return;
    }
    if (isTreeEnded && endsWithOwner && !WaitForEnd(0))
    {
        Linux::EndProcessTree(process);
    }
    else
    {
        killGroup(process);
    }
    if (WaitForEnd(sc_uiLongestEnd))
    {
        Reap();
    }
}

CChildProcess::CChildProcess(std::unique_ptr<SState> state) : m_state(std::move(state)) {}

std::unique_ptr<CChildProcess> CChildProcess::Start(const SChildOptions& options)
{
    SStart start = prepare(options);
    if (start.words.empty())
    {
        return nullptr;
    }
    auto state = std::make_unique<SState>();
    state->endsWithOwner = options.endsWithOwner;
    state->group = start.group = options.endsWithOwner ? Linux::TakeKeptGroup() : nullptr;
    const bool isKept = !options.endsWithOwner || start.group != nullptr;
    state->process = isKept ? startProcess(start) : -1;
    if (state->process > 0)
    {
        state->file.Assert(state->process);
    }
    if (state->file.Get() >= 0)
    {
        return std::unique_ptr<CChildProcess>(new CChildProcess(std::move(state)));
    }
    if (state->process > 0)
    {
        killGroup(state->process);
    }
    Linux::ReleaseKeptGroup(start.group);
    if (state->process > 0)
    {
        reap(state->process);
    }
    return nullptr;
}

CChildProcess::~CChildProcess()
{
    if (m_state->endsWithOwner)
    {
        m_state->End(false);
    }
    else if (!m_state->isReaped)
    {
        // Ended or not, it is nobody's business any more; init takes over what is left of it.
        m_state->Look(WNOHANG);
    }
}

bool CChildProcess::Wait(std::uint32_t milliseconds) const
{
    return m_state->isReaped || m_state->WaitForEnd(milliseconds);
}

void CChildProcess::Terminate()
{
    m_state->End(true);
}

std::optional<std::int64_t> CChildProcess::GetExitStatus()
{
    if (!m_state->isReaped && !IsRunning())
    {
        m_state->Reap();
    }
    return m_state->exitStatus;
}

void CChildProcess::LetGo()
{
    m_state->endsWithOwner = false;
    Linux::ReleaseKeptGroup(m_state->group);
    m_state->group = nullptr;
}

std::uint64_t CChildProcess::GetNumber() const noexcept
{
    return static_cast<std::uint64_t>(m_state->process);
}

std::intptr_t CChildProcess::GetWaitHandle() const noexcept
{
    return m_state->file.Get();
}

} // namespace LbOs

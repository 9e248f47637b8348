#include "base/os/childprocess.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <optional>
#include <string>
#include <utility>

#include <sys/wait.h>

#include "base/os/linux/childstart.h"
#include "base/os/linux/descriptor.h"
#include "base/os/linux/keeper.h"
#include "base/os/linux/namedfile.h"
#include "base/os/linux/processfile.h"
#include "base/os/linux/processtree.h"

namespace LbOs
{

struct CChildProcess::SState
{
    pid_t process = -1;
    Linux::CProcessFile file;
    Linux::SKeptGroup* group = nullptr; ///< null if no keeper watches the process
    bool endsWithOwner = true;
    std::string mark; ///< in the environments of its descendants
    bool isTerminated = false;
    bool isReaped = false;
    std::optional<std::int64_t> exitStatus;

    /// Describes the end of the process; with WNOHANG, si_pid is 0 while the process runs. Empty if other code has
    /// waited for the process or the system has discarded its exit status. The id may be reused then.
    std::optional<siginfo_t> Poll(int options);

    /// Also true if the status is unknown.
    bool HasEnded();

    bool WaitForEnd(std::uint32_t milliseconds);

    /// Precondition: the process has ended.
    void Reap();

    /// Kills the process, and its descendants if `isTreeEnded`.
    void End(bool isTreeEnded);

    /// Ends descendants of a process that ended by itself.
    void EndOrphans();
};

namespace
{

std::int64_t toExitStatus(const siginfo_t& end)
{
    return end.si_code == CLD_EXITED ? end.si_status : -std::int64_t{end.si_status};
}

/// Converts a status as waitpid() returns it.
std::int64_t toExitStatus(int status)
{
    return WIFEXITED(status) ? WEXITSTATUS(status) : -std::int64_t{WTERMSIG(status)};
}

/// Kills the process's group, and the process itself in case it has left the group. Call it before the process is
/// reaped, while the process id is valid.
void killGroup(pid_t process)
{
    kill(-process, SIGKILL);
    kill(process, SIGKILL);
}

} // namespace

std::optional<siginfo_t> CChildProcess::SState::Poll(int options)
{
    siginfo_t end = {};
    bool isKnown = false;
    do
    {
        file.Ensure(process);
        // Without a descriptor, the id identifies the process.
        const idtype_t kind = file.Get() < 0 ? P_PID : P_PIDFD;
        const auto name = static_cast<id_t>(file.Get() < 0 ? process : file.Get());
        isKnown = waitid(kind, name, &end, WEXITED | options) == 0;
    }
    while (!isKnown && errno != ECHILD); // Repeats after a signal, or if the descriptor was closed meanwhile.
    return isKnown ? std::optional(end) : std::nullopt;
}

bool CChildProcess::SState::HasEnded()
{
    const std::optional<siginfo_t> end = Poll(WNOHANG | WNOWAIT);
    return !end || end->si_pid != 0;
}

bool CChildProcess::SState::WaitForEnd(std::uint32_t milliseconds)
{
    // Without a valid descriptor, only polling notices the end.
    constexpr std::int64_t c_PollInterval = 1000;
    constexpr std::int64_t c_PollIntervalWithoutFile = 1;
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    while (!HasEnded())
    {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        if (milliseconds != sc_uiInfinite && left <= 0)
        {
            return false;
        }
        const std::int64_t interval = file.Get() < 0 ? c_PollIntervalWithoutFile : c_PollInterval;
        const std::int64_t time = milliseconds == sc_uiInfinite ? interval : std::min(left, interval);
        if (Linux::WaitReadable({file.Get()}, static_cast<std::uint32_t>(time)) == 0)
        {
            if (HasEnded())
            {
                return true;
            }
            Linux::PauseForEnd();
        }
    }
    return true;
}

void CChildProcess::SState::Reap()
{
    const std::optional<siginfo_t> end = Poll(WNOWAIT);
    if (end && endsWithOwner)
    {
        killGroup(process);
    }
    Linux::ReleaseKeptGroup(std::exchange(group, nullptr));
    if (end)
    {
        Poll(0);
        exitStatus = toExitStatus(*end);
    }
    else if (const std::optional<int> status = file.ReadStatus())
    {
        exitStatus = toExitStatus(*status);
    }
    isReaped = true;
}

void CChildProcess::SState::End(bool isTreeEnded)
{
    const bool endsTree = isTreeEnded && endsWithOwner;
    if (endsTree && (isReaped || HasEnded()))
    {
        EndOrphans();
    }
    if (isReaped || std::exchange(isTerminated, true))
    {
        return;
    }
    if (!Poll(WNOHANG | WNOWAIT))
    {
        Reap();
        return;
    }
    if (endsTree && !HasEnded())
    {
        pid_t root = process;
        Linux::EndProcessTrees({&root, 1});
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

void CChildProcess::SState::EndOrphans()
{
    if (!isTerminated && !mark.empty())
    {
        Linux::EndMarkedProcesses(mark);
        mark.clear();
    }
}

CChildProcess::CChildProcess(std::unique_ptr<SState> state) : m_state(std::move(state)) {}

std::unique_ptr<CChildProcess> CChildProcess::Start(const SChildOptions& options, std::wstring* failure)
{
    Linux::SStart start = Linux::PrepareStart(options);
    if (start.words.empty())
    {
        errno = EINVAL;
        Linux::DescribeFailure(failure, "execve");
        return nullptr;
    }
    auto state = std::make_unique<SState>();
    state->endsWithOwner = options.endsWithOwner;
    state->mark = start.mark;
    state->group = start.group = options.endsWithOwner ? Linux::TakeKeptGroup() : nullptr;
    if (options.endsWithOwner && start.group == nullptr)
    {
        Linux::DescribeMissingKeeper(failure);
        return nullptr;
    }
    state->process = Linux::StartProcess(start, state->file, failure);
    if (state->process <= 0)
    {
        Linux::ReleaseKeptGroup(start.group);
        return nullptr;
    }
    // Tries to open a descriptor if the start provided none. The process may have ended already.
    state->file.Ensure(state->process);
    return std::unique_ptr<CChildProcess>(new CChildProcess(std::move(state)));
}

CChildProcess::~CChildProcess()
{
    if (m_state->endsWithOwner)
    {
        m_state->End(false);
    }
    else if (!m_state->isReaped)
    {
        // Reaps an ended process; init takes over a running one.
        m_state->Poll(WNOHANG);
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

void CChildProcess::Detach()
{
    m_state->endsWithOwner = false;
    Linux::ReleaseKeptGroup(m_state->group);
    m_state->group = nullptr;
}

void EndDescendants() noexcept
{
    Linux::EndOwnDescendants();
}

void CChildProcess::PrepareStarts()
{
    Linux::EnsureKeeper();
}

std::uint64_t CChildProcess::GetId() const noexcept
{
    return static_cast<std::uint64_t>(m_state->process);
}

std::intptr_t CChildProcess::GetWaitHandle() const noexcept
{
    return m_state->file.Get();
}

} // namespace LbOs

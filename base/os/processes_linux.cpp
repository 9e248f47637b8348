#include "base/os/processes.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <limits>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include "base/lbencoding.h"
#include "base/os/linux/controlgroup.h"
#include "base/os/linux/descriptor.h"
#include "base/os/linux/usertasks.h"

namespace
{

std::filesystem::path getFolder(unsigned long id)
{
    return std::filesystem::path("/proc") / std::to_string(id);
}

std::optional<unsigned long> toNumber(std::string_view text)
{
    unsigned long id = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber ? std::optional(id) : std::nullopt;
}

/// The parent at the start of this process. When the parent ends, another process becomes the parent, and a later query
/// could not tell the two apart.
std::atomic<pid_t> s_firstParent = [] {
    pthread_atfork(nullptr, nullptr, [] { s_firstParent = getppid(); });
    return getppid();
}();

/// How many more processes and threads the user and the control group may have; 0 if memory is exhausted.
std::uint64_t countFreeProcesses() noexcept
try
{
    rlimit limit = {};
    std::uint64_t free = std::numeric_limits<std::uint64_t>::max();
    if (getrlimit(RLIMIT_NPROC, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY)
    {
        const std::uint64_t used = LbOs::Linux::CountUserTasks("/proc");
        free = limit.rlim_cur - std::min<std::uint64_t>(used, limit.rlim_cur);
    }
    return std::min(free, LbOs::Linux::GetFreeGroupProcesses().value_or(free));
}
catch (const std::bad_alloc&)
{
    return 0;
}

/// Threads that wait until this object is destroyed, so that all of them exist at the same time.
class CProbeThreads
{
public:
    CProbeThreads() { pthread_mutex_lock(&m_gate); }
    CProbeThreads(const CProbeThreads&) = delete;
    CProbeThreads& operator=(const CProbeThreads&) = delete;

    ~CProbeThreads()
    {
        pthread_mutex_unlock(&m_gate);
        for (const pthread_t thread : m_threads)
        {
            pthread_join(thread, nullptr);
        }
    }

    unsigned Start(unsigned wanted)
    {
        m_threads.reserve(wanted);
        pthread_t thread = {};
        while (m_threads.size() < wanted && pthread_create(&thread, nullptr, &wait, &m_gate) == 0)
        {
            m_threads.push_back(thread);
        }
        return static_cast<unsigned>(m_threads.size());
    }

private:
    static void* wait(void* gate)
    {
        pthread_mutex_lock(static_cast<pthread_mutex_t*>(gate));
        pthread_mutex_unlock(static_cast<pthread_mutex_t*>(gate));
        return nullptr;
    }

    pthread_mutex_t m_gate = PTHREAD_MUTEX_INITIALIZER;
    std::vector<pthread_t> m_threads;
};

} // namespace

std::vector<LbOs::SProcess> LbOs::ListProcesses()
{
    std::vector<SProcess> processes;
    std::error_code error;
    std::filesystem::directory_iterator entry("/proc", error);
    // A process may end while it is examined; unknown values stay empty.
    while (!error && entry != std::filesystem::directory_iterator())
    {
        if (const std::optional<unsigned long> id = toNumber(entry->path().filename().native()))
        {
            processes.push_back({*id, GetProcessExecutableName(*id)});
        }
        entry.increment(error);
    }
    return processes;
}

std::optional<unsigned long> LbOs::GetParentProcessId()
{
    const pid_t parent = getppid();
    return parent == s_firstParent ? static_cast<unsigned long>(parent) : 0;
}

std::wstring LbOs::GetProcessExecutableName(unsigned long id)
{
    // The suffix that the system appends to the path of a deleted file, for example after an update.
    constexpr std::string_view c_Deleted = " (deleted)";
    std::error_code error;
    const std::filesystem::path link = std::filesystem::read_symlink(getFolder(id) / "exe", error);
    std::string name = link.filename().native();
    if (name.ends_with(c_Deleted))
    {
        name.resize(name.size() - c_Deleted.size());
    }
    return LbEncoding::FromNative(name);
}

void LbOs::KillProcess(const SProcess& process)
{
    // While the descriptor is open it denotes this process, even if another process gets its id.
    const Linux::CDescriptor file(static_cast<int>(syscall(SYS_pidfd_open, static_cast<pid_t>(process.id), 0)));
    if (file.IsOpen() && GetProcessExecutableName(process.id) == process.executableName)
    {
        syscall(SYS_pidfd_send_signal, file.Get(), SIGKILL, nullptr, 0);
    }
}

std::uint64_t LbOs::GetProcessLimit() noexcept
{
    rlimit limit = {};
    const std::uint64_t own = getrlimit(RLIMIT_NPROC, &limit) == 0 ? limit.rlim_cur : RLIM_INFINITY;
    return std::min<std::uint64_t>(own, Linux::GetGroupProcessLimit().value_or(own));
}

bool LbOs::HasFewProcesses() noexcept
{
    constexpr std::uint64_t c_Few = 1024;
    constexpr std::uint64_t c_Many = 16384;
    const std::uint64_t limit = GetProcessLimit();
    if (limit < c_Few || limit >= c_Many)
    {
        // Counts only if the limit is between c_Few and c_Many, because counting may take milliseconds. Usual limits
        // are larger.
        return limit < c_Few;
    }
    static const std::uint64_t s_free = countFreeProcesses();
    return s_free < c_Few;
}

unsigned LbOs::CountStartableThreads(unsigned wanted)
{
    return CProbeThreads().Start(wanted);
}

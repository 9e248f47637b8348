#include "base/os/namedevent.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/os/linux/descriptor.h"
#include "base/os/linux/namedfile.h"
#include "base/os/linux/processfile.h"

namespace LbOs
{

/// A named pipe: it contains bytes while the event is set. A process can wait for the pipe and a child process with one
/// call, which is impossible for a flag in shared memory.
struct CNamedEvent::SState
{
    SState() = default;
    SState(const SState&) = delete;
    SState& operator=(const SState&) = delete;
    ~SState() { releaseLost(); }

    bool Open();
    int GetPipe();
    bool Drain();

    std::string path;
    Linux::CNamedFile file; ///< empty if the event was only opened
    Linux::CDescriptor pipe;
    dev_t device = 0;
    ino_t node = 0;

private:
    bool releaseLost();
};

/// Opens the path if it is a pipe of the current user.
bool CNamedEvent::SState::Open()
{
    if (path.empty())
    {
        return false;
    }
    // Opened for both directions, so that both ends stay open whatever other processes close.
    pipe = Linux::AboveStandard(
        Linux::Retry([this] { return open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK); }));
    struct stat status = {};
    if (!pipe.IsOpen() || fstat(pipe.Get(), &status) != 0 || !S_ISFIFO(status.st_mode) || status.st_uid != geteuid())
    {
        pipe.Reset();
        return false;
    }
    device = status.st_dev;
    node = status.st_ino;
    return true;
}

/// If a test has closed the descriptor, gives it up without closing it again, because its number may now belong to
/// another file. True if it was closed.
bool CNamedEvent::SState::releaseLost()
{
    struct stat status = {};
    const bool isLost = fstat(pipe.Get(), &status) != 0 || status.st_dev != device || status.st_ino != node;
    if (isLost)
    {
        pipe.Release();
    }
    return isLost;
}

/// The pipe, reopened if it was lost; negative on failure.
int CNamedEvent::SState::GetPipe()
{
    if (releaseLost())
    {
        Open();
    }
    return pipe.Get();
}

/// Reads all bytes; true if there were any. Reads at most the pipe's capacity, so that a process that keeps writing
/// cannot block the caller.
bool CNamedEvent::SState::Drain()
{
    char bytes[4096];
    const auto take = [&] { return Linux::Retry([&] { return read(pipe.Get(), bytes, sizeof(bytes)); }); };
    ssize_t count = take();
    const bool wereThere = count > 0;
    if (count == sizeof(bytes))
    {
        // Another process may have enlarged the pipe.
        const int capacity = fcntl(pipe.Get(), F_GETPIPE_SZ);
        for (ssize_t taken = count; count == sizeof(bytes) && taken < capacity; taken += count)
        {
            count = take();
        }
    }
    return wereThere;
}

CNamedEvent::CNamedEvent(std::unique_ptr<SState> state) : m_state(std::move(state)) {}

CNamedEvent::~CNamedEvent() = default;

std::unique_ptr<CNamedEvent> CNamedEvent::Create(const std::wstring& name, std::wstring* failure)
{
    auto state = std::make_unique<SState>();
    state->path = Linux::ToObjectPath(name);
    state->file = Linux::CNamedFile(state->path, failure, [failure](const char* path) {
        constexpr mode_t c_Rights = S_IRUSR | S_IWUSR;
        // The umask of a test may remove rights that the owner needs.
        const bool isMade = mkfifo(path, c_Rights) == 0 && chmod(path, c_Rights) == 0;
        if (!isMade)
        {
            Linux::DescribeFailure(failure, "mkfifo");
        }
        return isMade;
    });
    const bool isMade = state->file.Exists() && state->Open();
    if (state->file.Exists() && !isMade)
    {
        Linux::DescribeFailure(failure, "open");
    }
    return isMade ? std::unique_ptr<CNamedEvent>(new CNamedEvent(std::move(state))) : nullptr;
}

std::unique_ptr<CNamedEvent> CNamedEvent::Open(const std::wstring& name)
{
    auto state = std::make_unique<SState>();
    state->path = Linux::ToObjectPath(name);
    return state->Open() ? std::unique_ptr<CNamedEvent>(new CNamedEvent(std::move(state))) : nullptr;
}

bool CNamedEvent::IsNamed() const
{
    struct stat status = {};
    return lstat(m_state->path.c_str(), &status) == 0 && status.st_dev == m_state->device &&
           status.st_ino == m_state->node;
}

bool CNamedEvent::Set()
{
    const int pipe = m_state->GetPipe();
    const char mark = 1;
    // If the pipe is full, the event is already set.
    return Linux::Retry([&] { return write(pipe, &mark, 1); }) == 1 || errno == EAGAIN;
}

bool CNamedEvent::Reset()
{
    m_state->GetPipe();
    return m_state->Drain();
}

EEventWait CNamedEvent::Wait(std::uint32_t milliseconds, const CChildProcess* child)
{
    // If other code has closed the child's descriptor and its number now belongs to the descriptor of another process,
    // only polling notices the child's end.
    constexpr std::int64_t c_PollInterval = 1000;
    constexpr int c_Child = 1;
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    bool hasFailed = false;
    for (int pipe = m_state->GetPipe(); pipe >= 0; pipe = m_state->GetPipe())
    {
        const int childFile = child == nullptr ? -1 : static_cast<int>(child->GetWaitHandle());
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        const auto time = static_cast<std::uint32_t>(std::clamp<std::int64_t>(left, 0, c_PollInterval));
        const int ready = Linux::WaitReadable({pipe, childFile}, time);
        // Asks the child itself, because a test may have closed its descriptor. The query then opens a new descriptor.
        const bool hasEnded = ready != 0 && child != nullptr && child->Wait(0);
        // The event takes precedence over the child's end, because the child may have set it just before it ended.
        if (m_state->Drain())
        {
            return EEventWait::Signaled;
        }
        if (hasEnded)
        {
            return EEventWait::ChildEnded;
        }
        if (left <= 0 || (ready == Linux::c_WaitTimedOut && left <= c_PollInterval))
        {
            return EEventWait::TimedOut;
        }
        if (ready == c_Child)
        {
            Linux::PauseForEnd();
        }
        // One failure is tolerated: the descriptor may have been closed meanwhile.
        if (ready == Linux::c_WaitFailed && std::exchange(hasFailed, true))
        {
            break;
        }
    }
    return EEventWait::Failed;
}

} // namespace LbOs

#include "base/os/namedevent.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "base/os/namedfile_linux.h"

namespace LbOs
{

/// A pipe with a name: bytes in it mean that the event is set. Unlike a number in shared memory it can be waited for
/// together with a process.
struct CNamedEvent::SState
{
    bool Open();
    int GetPipe();
    bool Drain();

    std::string path;
    Linux::CNamedFile file; ///< of the object that created the event
    Linux::CDescriptor pipe;
    dev_t device = 0;
    ino_t node = 0;
};

bool CNamedEvent::SState::Open()
{
    // For both directions, so that the pipe has no other end that could be closed.
    pipe = Linux::OpenOwnFile(path, O_RDWR, S_IFIFO);
    struct stat status = {};
    if (!pipe.IsOpen() || fstat(pipe.Get(), &status) != 0)
    {
        return false;
    }
    device = status.st_dev;
    node = status.st_ino;
    return true;
}

/// The pipe, opened again when a test has closed descriptors that are not its own. By now the number may be that of
/// another file, which is not to be touched.
int CNamedEvent::SState::GetPipe()
{
    struct stat status = {};
    if (fstat(pipe.Get(), &status) != 0 || status.st_dev != device || status.st_ino != node)
    {
        pipe.Release();
        Open();
    }
    return pipe.Get();
}

/// Takes all bytes out; true when there were any.
bool CNamedEvent::SState::Drain()
{
    char bytes[64];
    bool wasSet = false;
    ssize_t count = sizeof(bytes);
    while (count == sizeof(bytes))
    {
        count = Linux::Retry([&] { return read(pipe.Get(), bytes, sizeof(bytes)); });
        wasSet = wasSet || count > 0;
    }
    return wasSet;
}

CNamedEvent::CNamedEvent(std::unique_ptr<SState> state) : m_state(std::move(state)) {}

CNamedEvent::~CNamedEvent() = default;

std::unique_ptr<CNamedEvent> CNamedEvent::Create(const std::wstring& name)
{
    auto state = std::make_unique<SState>();
    state->path = Linux::ToObjectPath(name);
    state->file = Linux::CNamedFile(state->path, [](const char* path) { return mkfifo(path, S_IRUSR | S_IWUSR) == 0; });
    const bool isMade = state->file.Exists() && state->Open();
    return isMade ? std::unique_ptr<CNamedEvent>(new CNamedEvent(std::move(state))) : nullptr;
}

std::unique_ptr<CNamedEvent> CNamedEvent::Open(const std::wstring& name)
{
    auto state = std::make_unique<SState>();
    state->path = Linux::ToObjectPath(name);
    return state->Open() ? std::unique_ptr<CNamedEvent>(new CNamedEvent(std::move(state))) : nullptr;
}

bool CNamedEvent::Set()
{
    const int pipe = m_state->GetPipe();
    const char mark = 1;
    // A pipe that takes no more is set.
    return Linux::Retry([&] { return write(pipe, &mark, 1); }) == 1 || errno == EAGAIN;
}

bool CNamedEvent::Reset()
{
    m_state->GetPipe();
    return m_state->Drain();
}

EEventWait CNamedEvent::Wait(std::uint32_t milliseconds, const CChildProcess* child)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    const int childFile = child == nullptr ? -1 : static_cast<int>(child->GetWaitHandle());
    const int pipe = m_state->GetPipe();
    while (true)
    {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        const auto time = static_cast<std::uint32_t>(std::max<std::int64_t>(left, 0));
        const int ready = Linux::WaitReadable({pipe, childFile}, time);
        if (ready == Linux::c_WaitFailed || pipe < 0)
        {
            return EEventWait::Failed;
        }
        // Before the child's end counts: it may have set the event just then.
        if (m_state->Drain())
        {
            return EEventWait::Signaled;
        }
        if (ready != 0)
        {
            return ready == 1 ? EEventWait::ChildEnded : EEventWait::TimedOut;
        }
    }
}

} // namespace LbOs

#include "base/os/console.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <poll.h>
#include <stdio_ext.h>
#include <unistd.h>

#include "base/lbencoding.h"

namespace
{

/// Keeps the signal for a pipe without reader away from a scope: it would end the process, where lost output should
/// not.
class CPipeSignalBlock
{
public:
    CPipeSignalBlock()
    {
        sigemptyset(&m_pipe);
        sigaddset(&m_pipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &m_pipe, &m_former);
    }

    ~CPipeSignalBlock() { pthread_sigmask(SIG_SETMASK, &m_former, nullptr); }

    CPipeSignalBlock(const CPipeSignalBlock&) = delete;
    CPipeSignalBlock& operator=(const CPipeSignalBlock&) = delete;

    /// Takes a signal that has come meanwhile, unless the caller had it blocked and may wait for one of its own.
    void Discard() const
    {
        if (sigismember(&m_former, SIGPIPE) == 0)
        {
            const timespec noWait = {};
            sigtimedwait(&m_pipe, nullptr, &noWait);
        }
    }

private:
    sigset_t m_pipe = {};
    sigset_t m_former = {};
};

/// Whether a failed write is to be tried again: some callers hand over a pipe that does not block when it is full.
/// Waits until there is place in it.
bool waitForPlace(int file)
{
    if (errno != EAGAIN && errno != EWOULDBLOCK)
    {
        return false;
    }
    pollfd place = {file, POLLOUT, 0};
    return poll(&place, 1, -1) > 0 || errno == EINTR;
}

void writeStream(std::FILE* stream, std::string_view bytes)
{
    const CPipeSignalBlock block;
    // What others left in the stream goes first. The bytes themselves pass it by: a stream that has once been used for
    // wide text takes no bytes, and one that has taken bytes takes no wide text of others any more.
    bool isWritten = std::fflush(stream) == 0;
    if (!isWritten)
    {
        // Else the stream would keep the bytes and try them again with each later call.
        __fpurge(stream);
        std::clearerr(stream);
    }
    while (!bytes.empty())
    {
        const ssize_t count = write(fileno(stream), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR && !waitForPlace(fileno(stream)))
        {
            isWritten = false;
            break;
        }
        bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    if (!isWritten)
    {
        block.Discard();
    }
}

} // namespace

std::uint32_t LbOs::GetConsoleCodePage()
{
    return 0;
}

void LbOs::SetConsoleCodePage(std::uint32_t /*codePage*/) {}

void LbOs::WriteStandardOutput(std::string_view bytes)
{
    writeStream(stdout, bytes);
}

void LbOs::WriteStandardError(std::string_view bytes)
{
    writeStream(stderr, bytes);
}

void LbOs::AllocateOutputBuffer() noexcept
{
    if (__fbufsize(stdout) != 0)
    {
        return;
    }
    // Only full buffering is allocated at once. A terminal's output goes by lines again behind that.
    std::setvbuf(stdout, nullptr, _IOFBF, 0);
    if (isatty(fileno(stdout)) != 0)
    {
        std::setvbuf(stdout, nullptr, _IOLBF, 0);
    }
}

bool LbOs::EnableTerminalSequences()
{
    const std::wstring terminal = GetEnvironmentText(L"TERM");
    return isatty(STDOUT_FILENO) == 1 && !terminal.empty() && terminal != L"dumb";
}

std::wstring LbOs::GetEnvironmentText(const wchar_t* name)
{
    const char* const value = std::getenv(LbEncoding::ToNative(name).c_str());
    return value == nullptr ? std::wstring() : LbEncoding::FromNative(value);
}

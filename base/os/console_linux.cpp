#include "base/os/console.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>

#include <poll.h>
#include <stdio_ext.h>
#include <sys/ioctl.h>
#include <sys/uio.h>
#include <unistd.h>

#include "base/lbencoding.h"

namespace
{

/// Blocks SIGPIPE during a scope: lost output must not end the process.
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

    /// Consumes a signal that arrived meanwhile, unless the caller had already blocked SIGPIPE and may be waiting for
    /// it.
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

/// After a failed write: if the stream is a full non-blocking pipe, waits until it has space. True if the caller should
/// retry the write.
bool waitForPlace(int file)
{
    if (errno != EAGAIN && errno != EWOULDBLOCK)
    {
        return false;
    }
    pollfd place = {file, POLLOUT, 0};
    return poll(&place, 1, -1) > 0 || errno == EINTR;
}

/// True for pipes and sockets, which, unlike files, have no position: only they can lose their reader.
bool mayLoseReader(int file)
{
    return lseek(file, 0, SEEK_CUR) < 0;
}

/// Writes without raising SIGPIPE, which Linux supports since 6.18, so the signal need not be blocked. Returns the
/// number of bytes; 0 on any failure.
std::size_t writeWithoutSignal(int file, std::string_view bytes)
{
    constexpr int c_NoSignal = 0x100; // RWF_NOSIGNAL, which the system headers do not have yet.
    constexpr off_t c_PresentPosition = -1;
    static std::atomic<bool> s_isKnown = true;
    if (!s_isKnown.load(std::memory_order_relaxed))
    {
        return 0;
    }
    const iovec part = {const_cast<char*>(bytes.data()), bytes.size()};
    const ssize_t count = pwritev2(file, &part, 1, c_PresentPosition, c_NoSignal);
    if (count < 0 && errno == EOPNOTSUPP)
    {
        s_isKnown = false;
    }
    return count < 0 ? 0 : static_cast<std::size_t>(count);
}

std::atomic<bool> s_isOutputLost = false;

/// False if bytes were dropped. True for a closed stream, because a case or the caller has closed it on purpose.
bool writeStream(std::FILE* stream, std::string_view bytes)
{
    if (__fpending(stream) == 0 && !bytes.empty())
    {
        bytes.remove_prefix(writeWithoutSignal(fileno(stream), bytes));
        if (bytes.empty())
        {
            return true;
        }
    }
    // If the output is a file, this query replaces the two system calls that block and restore the signal.
    std::optional<CPipeSignalBlock> block;
    if (mayLoseReader(fileno(stream)))
    {
        block.emplace();
    }
    // Flushes what others wrote into the stream, then bypasses the stream: a stream that was used for wide text accepts
    // no bytes, and a stream that was used for bytes accepts no wide text.
    const bool isFlushed = std::fflush(stream) == 0;
    bool isWritten = isFlushed || errno == EBADF;
    if (!isFlushed)
    {
        // Otherwise the stream would keep the bytes and try to write them again with each later call.
        __fpurge(stream);
        std::clearerr(stream);
    }
    while (!bytes.empty())
    {
        const ssize_t count = write(fileno(stream), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR && !waitForPlace(fileno(stream)))
        {
            isWritten = isWritten && errno == EBADF;
            break;
        }
        bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    if (!isWritten && block)
    {
        block->Discard();
    }
    return isWritten;
}

bool isAbleTerminal(int file)
{
    const std::wstring terminal = LbOs::GetEnvironmentText(L"TERM");
    return isatty(file) == 1 && !terminal.empty() && terminal != L"dumb";
}

std::uint32_t getTerminalWidth(int file)
{
    constexpr std::uint32_t c_UsualWidth = 80;
    if (!isAbleTerminal(file))
    {
        return 0;
    }
    winsize size = {};
    return ioctl(file, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : c_UsualWidth;
}

} // namespace

std::uint32_t LbOs::GetConsoleCodePage()
{
    return 0;
}

void LbOs::SetConsoleCodePage(std::uint32_t /*codePage*/) {}

void LbOs::WriteStandardOutput(std::string_view bytes)
{
    if (!writeStream(stdout, bytes))
    {
        s_isOutputLost = true;
    }
}

bool LbOs::IsStandardOutputLost() noexcept
{
    return s_isOutputLost;
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
    // Only full buffering allocates at once. Afterwards a terminal gets line buffering again.
    std::setvbuf(stdout, nullptr, _IOFBF, 0);
    if (isatty(fileno(stdout)) != 0)
    {
        std::setvbuf(stdout, nullptr, _IOLBF, 0);
    }
}

bool LbOs::EnableTerminalSequences()
{
    return isAbleTerminal(STDOUT_FILENO);
}

std::uint32_t LbOs::GetOutputTerminalWidth()
{
    return getTerminalWidth(STDOUT_FILENO);
}

std::uint32_t LbOs::GetErrorTerminalWidth()
{
    return getTerminalWidth(STDERR_FILENO);
}

bool LbOs::IsInputTerminal()
{
    return isatty(STDIN_FILENO) == 1;
}

std::wstring LbOs::GetEnvironmentText(const wchar_t* name)
{
    const char* const value = std::getenv(LbEncoding::ToNative(name).c_str());
    return value == nullptr ? std::wstring() : LbEncoding::FromNative(value);
}

void LbOs::SetEnvironmentText(const wchar_t* name, const std::wstring& value)
{
    setenv(LbEncoding::ToNative(name).c_str(), LbEncoding::ToNative(value).c_str(), 1);
}

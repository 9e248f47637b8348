#include "base/os/console.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <string_view>

#include <io.h>

#include "base/lbencoding.h"
#include "base/os/windows/api.h"

namespace
{

HANDLE getHandle(std::FILE* stream)
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

/// Prints a sequence; true if it leaves the cursor in place. Some consoles accept the mode but print sequences as text;
/// this function then erases the text. Prints nothing and returns false near the end of a line, where the text might
/// wrap and scroll the console.
bool understandsSequences(HANDLE console)
{
    constexpr std::wstring_view c_NoAttributes = L"\x1b[0m";
    CONSOLE_SCREEN_BUFFER_INFO before = {};
    CONSOLE_SCREEN_BUFFER_INFO after = {};
    DWORD count = 0;
    if (GetConsoleScreenBufferInfo(console, &before) == FALSE ||
        before.dwCursorPosition.X + static_cast<int>(c_NoAttributes.size()) >= before.dwSize.X ||
        WriteConsoleW(console, c_NoAttributes.data(), c_NoAttributes.size(), &count, nullptr) == FALSE ||
        GetConsoleScreenBufferInfo(console, &after) == FALSE)
    {
        return false;
    }
    if (before.dwCursorPosition.X == after.dwCursorPosition.X && before.dwCursorPosition.Y == after.dwCursorPosition.Y)
    {
        return true;
    }
    FillConsoleOutputCharacterW(console, L' ', c_NoAttributes.size(), before.dwCursorPosition, &count);
    SetConsoleCursorPosition(console, before.dwCursorPosition);
    return false;
}

/// The size of the part without an incomplete surrogate pair at its end.
std::size_t getWholeSize(std::wstring_view part)
{
    const bool isCut = part.size() > 1 && part.back() >= 0xD800 && part.back() <= 0xDBFF;
    return part.size() - (isCut ? 1 : 0);
}

bool isConsole(std::FILE* stream)
{
    DWORD mode = 0;
    return GetConsoleMode(getHandle(stream), &mode) != FALSE;
}

/// Writes text to a console independently of the console's code page; the run-time would pass the text on byte by byte.
/// False if bytes were dropped.
bool writeToConsole(std::FILE* stream, std::string_view bytes)
{
    // Some systems accept at most 64 KiB per call.
    constexpr std::size_t c_LongestPart = 8'000;
    const HANDLE console = getHandle(stream);
    std::fflush(stream);
    const std::wstring text = LbEncoding::FromUtf8(bytes);
    std::wstring_view rest = text;
    while (!rest.empty())
    {
        DWORD count = 0;
        const auto size = static_cast<DWORD>(getWholeSize(rest.substr(0, c_LongestPart)));
        if (WriteConsoleW(console, rest.data(), size, &count, nullptr) == FALSE || count == 0)
        {
            return false;
        }
        // A console may accept only a part.
        rest.remove_prefix(std::min<std::size_t>(count, rest.size()));
    }
    return true;
}

std::atomic<bool> s_isOutputLost = false;

/// False if bytes were dropped. True for a closed stream, because a case or the caller has closed it on purpose.
bool writeStream(std::FILE* stream, std::string_view bytes)
{
    // A process without console and streams, such as a service, discards its output.
    if (_fileno(stream) < 0)
    {
        return true;
    }
    if (isConsole(stream))
    {
        return writeToConsole(stream, bytes);
    }
    errno = 0;
    std::fwrite(bytes.data(), 1, bytes.size(), stream);
    const bool isWritten = (std::fflush(stream) == 0 && std::ferror(stream) == 0) || errno == EBADF;
    std::clearerr(stream);
    return isWritten;
}

/// If the handle is not a console that understands sequences, returns false and leaves the mode unchanged.
bool enableSequences(HANDLE console)
{
    DWORD mode = 0;
    if (GetConsoleMode(console, &mode) == FALSE ||
        SetConsoleMode(console, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING) == FALSE)
    {
        return false;
    }
    if (understandsSequences(console))
    {
        return true;
    }
    SetConsoleMode(console, mode);
    return false;
}

/// 0 if the handle is not a console.
std::uint32_t getWidth(HANDLE console)
{
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    return GetConsoleScreenBufferInfo(console, &info) != FALSE
               ? static_cast<std::uint32_t>(info.srWindow.Right - info.srWindow.Left + 1)
               : 0;
}

} // namespace

std::uint32_t LbOs::GetConsoleCodePage()
{
    return GetConsoleOutputCP();
}

void LbOs::SetConsoleCodePage(std::uint32_t codePage)
{
    if (codePage != 0)
    {
        SetConsoleOutputCP(codePage);
    }
}

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

// The run-time does not allocate its buffers with malloc.
void LbOs::AllocateOutputBuffer() noexcept {}

bool LbOs::EnableTerminalSequences()
{
    return enableSequences(GetStdHandle(STD_OUTPUT_HANDLE));
}

std::uint32_t LbOs::GetOutputTerminalWidth()
{
    static const bool s_isAble = EnableTerminalSequences();
    return s_isAble ? getWidth(GetStdHandle(STD_OUTPUT_HANDLE)) : 0;
}

std::uint32_t LbOs::GetErrorTerminalWidth()
{
    static const bool s_isAble = enableSequences(GetStdHandle(STD_ERROR_HANDLE));
    return s_isAble ? getWidth(GetStdHandle(STD_ERROR_HANDLE)) : 0;
}

bool LbOs::IsInputTerminal()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != FALSE;
}

std::wstring LbOs::GetEnvironmentText(const wchar_t* name)
{
    return Windows::ReadText(
        [name](wchar_t* buffer, DWORD size) { return GetEnvironmentVariableW(name, buffer, size); });
}

void LbOs::SetEnvironmentText(const wchar_t* name, const std::wstring& value)
{
    SetEnvironmentVariableW(name, value.c_str());
}

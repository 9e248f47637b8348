#include "base/os/console.h"

#include <cstdio>

#include "base/os/windows_api.h"

namespace
{

void writeStream(std::FILE* stream, std::string_view bytes)
{
    std::fwrite(bytes.data(), 1, bytes.size(), stream);
    if (std::fflush(stream) != 0 || std::ferror(stream) != 0)
    {
        std::clearerr(stream);
    }
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
    writeStream(stdout, bytes);
}

void LbOs::WriteStandardError(std::string_view bytes)
{
    writeStream(stderr, bytes);
}

// The run-time's buffers are not allocated by malloc.
void LbOs::AllocateOutputBuffer() noexcept {}

bool LbOs::EnableTerminalSequences()
{
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(output, &mode) != FALSE &&
           SetConsoleMode(output, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != FALSE;
}

std::wstring LbOs::GetEnvironmentText(const wchar_t* name)
{
    return Windows::ReadText(
        [name](wchar_t* buffer, DWORD size) { return GetEnvironmentVariableW(name, buffer, size); });
}

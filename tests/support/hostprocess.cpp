#include "tests/support/hostprocess.h"

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/process.h"
#include "tests/support/places.h"
#include "tests/support/scopedfolder.h"

namespace
{

constexpr bool c_IsWindows = LbPath::c_Separator == L'\\';
constexpr const wchar_t* c_TerminalProgram = L"/usr/bin/script";

/// The command that starts a program as another user. Only this process uses that user, because tests that run at the
/// same time must not share a limit.
std::wstring getOtherUser()
{
    const unsigned long user = 1'000'000 + LbOs::GetProcessId();
    return LbFormat(L"setpriv --reuid %lu --regid %lu --clear-groups", user, user);
}

/// Quotes a text for the Windows shell. Throws for percent signs, and for quotation marks, because the parts of the
/// shell do not agree on how to quote those.
std::wstring quoteForWindows(const std::wstring& text)
{
    if (text.find_first_of(L"\"%") != std::wstring::npos)
    {
        throw std::invalid_argument("An argument contains characters that the shell cannot pass on");
    }
    // A backslash before the closing mark would escape it.
    return L"\"" + text + (text.ends_with(L'\\') ? L"\\\"" : L"\"");
}

std::wstring quoteForLinux(const std::wstring& text)
{
    std::wstring quoted = L"'";
    for (const wchar_t character : text)
    {
        quoted += character == L'\'' ? std::wstring(L"'\\''") : std::wstring(1, character);
    }
    return quoted + L"'";
}

std::wstring quote(const std::wstring& text)
{
    return c_IsWindows ? quoteForWindows(text) : quoteForLinux(text);
}

std::wstring getSettings(const SHostOptions& options)
{
    std::wstring settings;
    if (!options.workingDirectory.empty())
    {
        settings +=
            (c_IsWindows ? L"cd /d " : L"cd ") + quote(LbPath::WithoutSeparator(options.workingDirectory)) + L"&&";
    }
    for (const auto& [name, value] : options.variables)
    {
        if (c_IsWindows)
        {
            settings += LbFormat(L"set %s=%s&&", name, value);
        }
        else
        {
            settings += value.empty() ? LbFormat(L"unset %s&&", name) : LbFormat(L"export %s=%s&&", name, quote(value));
        }
    }
    if (!options.ignoredSignal.empty())
    {
        settings += LbFormat(L"trap '' %s&&", options.ignoredSignal);
    }
    if (options.memoryLimitKilobytes != 0)
    {
        settings += LbFormat(L"ulimit -v %u&&", options.memoryLimitKilobytes);
    }
    if (options.openFilesLimit != 0)
    {
        settings += LbFormat(L"ulimit -S -n %u&&", options.openFilesLimit);
    }
    if (options.openFilesHardLimit != 0)
    {
        settings += LbFormat(L"ulimit -n %u&&", options.openFilesHardLimit);
    }
    return settings;
}

std::wstring getHostCommand(const std::vector<std::wstring>& arguments, const SHostOptions& options)
{
    // The program replaces the shell, because the shell would report a crash on standard error.
    std::wstring command = c_IsWindows ? L"" : L"exec ";
    if (options.processesLimit != 0)
    {
        // The limit counts all processes of a user and does not apply to the administrator.
        command += LbFormat(L"prlimit --nproc=%u %s ", options.processesLimit, getOtherUser());
    }
    command += quote(LbPath::ToNative(options.program.empty() ? L"" LUTESTSUITE_HOST : options.program));
    for (const std::wstring& argument : arguments)
    {
        command += L" " + quote(argument);
    }
    return options.onTerminal ? LbFormat(L"%s -qec %s /dev/null", c_TerminalProgram, quote(command)) : command;
}

/// The command in the encoding of the platform's narrow calls.
std::string toCommandBytes(const std::wstring& command)
{
    if (!c_IsWindows)
    {
        return LbEncoding::ToNative(command);
    }
    const std::string bytes = LbEncoding::ToLatin1(command);
    if (LbEncoding::FromLatin1(bytes) != command)
    {
        throw std::invalid_argument("An argument contains characters that the narrow calls cannot pass on");
    }
    // The shell removes the outer quotation marks.
    return "\"" + bytes + "\"";
}

int runShell(const std::wstring& command)
{
    constexpr int c_SignalMask = 0x7F;
    const int status = std::system(toCommandBytes(command).c_str());
    if (status == -1)
    {
        throw std::system_error(errno, std::generic_category(), "The shell cannot be started");
    }
    if (c_IsWindows)
    {
        return status;
    }
    const int signal = status & c_SignalMask;
    return signal != 0 ? -signal : status >> 8;
}

} // namespace

SHostRun RunHost(const std::vector<std::wstring>& arguments, const SHostOptions& options)
{
    const ScopedFolder folder;
    const std::wstring output = folder.WriteFile(L"stdout", "");
    const std::wstring errors = folder.WriteFile(L"stderr", "");
    const std::wstring command =
        LbFormat(L"%s%s >%s 2>%s <%s", getSettings(options), getHostCommand(arguments, options),
                 quote(options.outputDevice.empty() ? output : options.outputDevice), quote(errors),
                 c_IsWindows ? L"NUL" : L"/dev/null");
    SHostRun run;
    run.exitStatus = runShell(command);
    run.output = LbFileSystem::ReadFile8Bit(output);
    run.errors = LbFileSystem::ReadFile8Bit(errors);
    return run;
}

bool CanRunHostOnTerminal()
{
    return !c_IsWindows && LbFileSystem::IsFile(c_TerminalProgram);
}

bool CanLimitHost()
{
    // Sanitizers reserve more address space than any useful limit.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return false;
#else
    return !c_IsWindows;
#endif
}

bool CanLimitHostProcesses()
{
    return CanLimitHost() &&
           runShell(LbFormat(L"%s test -x %s 2>/dev/null", getOtherUser(), quote(L"" LUTESTSUITE_HOST))) == 0;
}

std::string ToPlatformLines(const std::string& text)
{
    std::string bytes;
    for (const char character : text)
    {
        if (c_IsWindows && character == '\n')
        {
            bytes += '\r';
        }
        bytes += character;
    }
    return bytes;
}

std::string FromPlatformLines(const std::string& bytes)
{
    std::string text;
    for (std::size_t index = 0; index < bytes.size(); ++index)
    {
        const bool isLineEnd = c_IsWindows && bytes.compare(index, 2, "\r\n") == 0;
        text += isLineEnd ? '\n' : bytes[index];
        index += isLineEnd ? 1 : 0;
    }
    return text;
}

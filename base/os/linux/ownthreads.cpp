#include "base/os/linux/ownthreads.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

pid_t parseNumber(const char* text) noexcept
{
    pid_t number = 0;
    for (; *text >= '0' && *text <= '9'; ++text)
    {
        number = number * 10 + (*text - '0');
    }
    return number;
}

enum class EThreadFile
{
    Read,
    Gone,      ///< the thread has ended
    Unreadable ///< the state of the thread is unknown
};

/// Reads the beginning of one of the kernel's files about a thread.
template<std::size_t Size>
EThreadFile readThreadFile(pid_t thread, std::string_view name, char (&text)[Size], std::size_t& length) noexcept
{
    char path[64];
    char digits[16];
    std::size_t digitCount = 0;
    for (; thread > 0; thread /= 10)
    {
        digits[digitCount++] = static_cast<char>('0' + thread % 10);
    }
    char* end = std::copy_n("/proc/self/task/", 16, path);
    end = std::reverse_copy(digits, digits + digitCount, end);
    *std::ranges::copy(name, end).out = '\0';
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    const ssize_t count = file < 0 ? -1 : read(file, text, Size);
    const bool isGone = count < 0 && (errno == ENOENT || errno == ESRCH);
    if (file >= 0)
    {
        close(file);
    }
    length = count > 0 ? static_cast<std::size_t>(count) : 0;
    return length > 0 ? EThreadFile::Read : isGone ? EThreadFile::Gone : EThreadFile::Unreadable;
}

struct SDirectoryEntry
{
    std::uint64_t number;
    std::int64_t offset;
    std::uint16_t length;
    std::uint8_t type;
    char name[1];
};

} // namespace

bool LbOs::Linux::ForOtherThreads(bool (*function)(void*, pid_t), void* context) noexcept
{
    const int directory = open("/proc/self/task", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory < 0)
    {
        return false;
    }
    const auto self = static_cast<pid_t>(syscall(SYS_gettid));
    alignas(SDirectoryEntry) char buffer[4096];
    long length = 1;
    bool isGood = true;
    bool isListed = false;
    while (isGood && length > 0)
    {
        length = syscall(SYS_getdents64, directory, buffer, sizeof(buffer));
        isGood = length >= 0;
        for (long position = 0; isGood && position < length;)
        {
            const auto* const entry = reinterpret_cast<const SDirectoryEntry*>(buffer + position);
            position += entry->length;
            const pid_t thread = parseNumber(entry->name);
            isListed = isListed || thread == self;
            isGood = thread == 0 || thread == self || function(context, thread);
        }
    }
    close(directory);
    return isGood && isListed;
}

bool LbOs::Linux::HasEnded(pid_t thread) noexcept
{
    char text[512];
    std::size_t length = 0;
    const EThreadFile result = readThreadFile(thread, "/stat", text, length);
    if (result != EThreadFile::Read)
    {
        return result == EThreadFile::Gone;
    }
    // "number (name) state ..."; a name may contain parentheses.
    const char* const end = text + length;
    const char* name = end;
    while (name > text && name[-1] != ')')
    {
        --name;
    }
    return name > text && name + 1 < end && (name[1] == 'Z' || name[1] == 'X');
}

std::uint64_t LbOs::Linux::ReadBlockedSignals(pid_t thread) noexcept
{
    constexpr std::string_view c_Field = "\nSigBlk:\t";
    char buffer[4096];
    std::size_t length = 0;
    if (readThreadFile(thread, "/status", buffer, length) != EThreadFile::Read)
    {
        return 0;
    }
    const std::string_view text(buffer, length);
    const std::size_t field = text.find(c_Field);
    std::uint64_t blocked = 0;
    if (field != std::string_view::npos)
    {
        std::from_chars(text.data() + field + c_Field.size(), text.data() + text.size(), blocked, 16);
    }
    return blocked;
}

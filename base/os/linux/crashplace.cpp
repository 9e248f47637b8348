#include "base/os/linux/crashplace.h"

#include <algorithm>
#include <charconv>
#include <climits>

#include <fcntl.h>

#include "base/os/linux/rawcalls.h"

namespace LbOs::Linux
{

SMapping ParseMapping(std::string_view line) noexcept
{
    SMapping mapping;
    const char* const end = line.data() + line.size();
    const auto [dash, startError] = std::from_chars(line.data(), end, mapping.start, 16);
    if (startError == std::errc() && dash != end)
    {
        std::from_chars(dash + 1, end, mapping.end, 16);
    }
    const std::size_t path = line.find('/');
    mapping.path = path == std::string_view::npos ? std::string_view() : line.substr(path);
    return mapping;
}

namespace
{

/// Reads lines through its own buffer, so it allocates no memory.
class CLines
{
public:
    explicit CLines(long file) : m_file(file) {}

    /// The next line without its line end; empty at the end of the file. Valid until the next call. Lines longer than
    /// the buffer are truncated.
    std::string_view Next()
    {
        std::copy(m_bytes + m_next, m_bytes + m_size, m_bytes);
        m_size -= m_next;
        m_next = 0;
        const char* end = std::find(m_bytes, m_bytes + m_size, '\n');
        while (end == m_bytes + m_size && m_size < sizeof(m_bytes))
        {
            const long count = Call(SYS_read, m_file, m_bytes + m_size, sizeof(m_bytes) - m_size);
            if (count <= 0)
            {
                break;
            }
            m_size += static_cast<std::size_t>(count);
            end = std::find(m_bytes, m_bytes + m_size, '\n');
        }
        const auto length = static_cast<std::size_t>(end - m_bytes);
        m_next = std::min(length + 1, m_size);
        return {m_bytes, length};
    }

private:
    long m_file;
    char m_bytes[PATH_MAX + 128];
    std::size_t m_size = 0;
    std::size_t m_next = 0;
};

/// The mappings of a module are adjacent; the first one is the module's start.
class CModuleStart
{
public:
    std::uintptr_t Follow(const SMapping& mapping)
    {
        const std::size_t length = std::min(mapping.path.size(), sizeof(m_path));
        const bool isSame = length == m_length && std::equal(m_path, m_path + length, mapping.path.begin());
        if (!isSame)
        {
            m_start = mapping.start;
            m_length = length;
            std::copy_n(mapping.path.begin(), length, m_path);
        }
        return m_start;
    }

private:
    char m_path[PATH_MAX];
    std::size_t m_length = 0;
    std::uintptr_t m_start = 0;
};

} // namespace

void FindCrashPlace(std::uintptr_t address, std::span<char> module, std::uintptr_t& offset) noexcept
{
    const long file = Call(SYS_open, "/proc/self/maps", O_RDONLY | O_CLOEXEC);
    if (file < 0)
    {
        return;
    }
    CLines lines(file);
    CModuleStart moduleStart;
    for (std::string_view line = lines.Next(); !line.empty(); line = lines.Next())
    {
        const SMapping mapping = ParseMapping(line);
        // A mapping without a path may lie between those of a module and must not reset the module's start.
        const std::uintptr_t start = mapping.path.empty() ? mapping.start : moduleStart.Follow(mapping);
        if (address >= mapping.start && address < mapping.end)
        {
            const std::string_view name = mapping.path.substr(mapping.path.rfind('/') + 1);
            const std::size_t length = std::min(name.size(), module.size() - 1);
            std::copy_n(name.begin(), length, module.begin());
            module[length] = '\0';
            offset = address - start;
            break;
        }
    }
    Call(SYS_close, file);
}

} // namespace LbOs::Linux

#include "base/os/linux/memorymap.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include <fcntl.h>

#include "base/os/linux/crashplace.h"

namespace LbOs::Linux
{

std::vector<SMemoryRange> ReadMemoryRanges(pid_t process)
{
    std::vector<SMemoryRange> ranges;
    std::ifstream file("/proc/" + std::to_string(process) + "/maps");
    for (std::string line; std::getline(file, line);)
    {
        const SMapping mapping = ParseMapping(line);
        std::istringstream words(line);
        std::string addresses;
        std::string rights;
        SMemoryRange range;
        words >> addresses >> rights >> std::hex >> range.offset;
        if (!words || rights.size() != 4)
        {
            continue;
        }
        range.start = mapping.start;
        range.end = mapping.end;
        range.isReadable = rights[0] == 'r';
        range.isWritable = rights[1] == 'w';
        range.isExecutable = rights[2] == 'x';
        range.isShared = rights[3] == 's';
        range.path = mapping.path;
        ranges.push_back(std::move(range));
    }
    return ranges;
}

CPageStates::CPageStates(pid_t process)
    : m_file(AboveStandard(open(("/proc/" + std::to_string(process) + "/pagemap").c_str(), O_RDONLY | O_CLOEXEC)))
{
}

std::vector<bool> CPageStates::FindChanged(std::uint64_t start, std::size_t count) const
{
    constexpr std::uint64_t c_Present = std::uint64_t{1} << 63U;
    constexpr std::uint64_t c_Swapped = std::uint64_t{1} << 62U;
    constexpr std::uint64_t c_OfFile = std::uint64_t{1} << 61U;
    std::vector<std::uint64_t> states(count);
    const std::size_t size = count * sizeof(std::uint64_t);
    const auto offset = static_cast<off_t>(start / c_PageSize * sizeof(std::uint64_t));
    if (Retry([&] { return pread(m_file.Get(), states.data(), size, offset); }) != static_cast<ssize_t>(size))
    {
        return std::vector<bool>(count, true);
    }
    std::vector<bool> changed(count);
    std::transform(states.begin(), states.end(), changed.begin(), [](std::uint64_t state) {
        return (state & (c_Present | c_Swapped)) != 0 && (state & c_OfFile) == 0;
    });
    return changed;
}

} // namespace LbOs::Linux

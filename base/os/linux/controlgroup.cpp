#include "base/os/linux/controlgroup.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <new>

namespace LbOs::Linux
{

namespace
{

/// The path of the version 2 group, from the line "0::/path". Empty if there is no such line.
std::string findGroup(std::string_view membership)
{
    constexpr std::string_view c_Version2 = "0::";
    while (!membership.empty())
    {
        const std::string_view line = membership.substr(0, membership.find('\n'));
        if (line.starts_with(c_Version2))
        {
            const std::string_view path = line.substr(c_Version2.size());
            return std::string(path.starts_with('/') ? path : std::string_view());
        }
        membership.remove_prefix(std::min(line.size() + 1, membership.size()));
    }
    return {};
}

/// Empty if the file is missing or contains "max".
std::optional<std::uint64_t> readNumber(const std::string& path)
{
    std::ifstream file(path);
    std::uint64_t number = 0;
    return file >> number ? std::optional(number) : std::nullopt;
}

} // namespace

std::optional<std::uint64_t> ReadGroupProcessLimit(std::string_view membership, const std::string& root)
{
    std::string group = findGroup(membership);
    if (group.empty())
    {
        return std::nullopt;
    }
    std::optional<std::uint64_t> least;
    // In a container the root shows the container's own group, which may have the limit.
    for (bool isRoot = false; !isRoot; group.resize(isRoot ? 0 : group.rfind('/')))
    {
        isRoot = group.empty() || group == "/";
        const std::optional<std::uint64_t> limit = readNumber(root + (isRoot ? "" : group) + "/pids.max");
        least = limit && (!least || *limit < *least) ? limit : least;
    }
    return least;
}

std::optional<std::uint64_t> GetGroupProcessLimit() noexcept
try
{
    static const std::optional<std::uint64_t> s_limit = [] {
        std::ifstream file("/proc/self/cgroup");
        const std::string membership(std::istreambuf_iterator<char>(file), {});
        return ReadGroupProcessLimit(membership, "/sys/fs/cgroup");
    }();
    return s_limit;
}
catch (const std::bad_alloc&)
{
    return std::nullopt;
}

} // namespace LbOs::Linux

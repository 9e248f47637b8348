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

/// The least of the values of the group and of the groups that contain it, each read from the group's folder.
template<typename F>
std::optional<std::uint64_t> findLeast(std::string_view membership, const std::string& root, const F& read)
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
        const std::optional<std::uint64_t> value = read(root + (isRoot ? "" : group));
        least = value && (!least || *value < *least) ? value : least;
    }
    return least;
}

std::optional<std::uint64_t> readLimit(const std::string& folder)
{
    return readNumber(folder + "/pids.max");
}

std::optional<std::uint64_t> readFree(const std::string& folder)
{
    const std::optional<std::uint64_t> limit = readLimit(folder);
    const std::uint64_t used = readNumber(folder + "/pids.current").value_or(0);
    return limit ? std::optional(*limit - std::min(used, *limit)) : std::nullopt;
}

std::string readMembership()
{
    std::ifstream file("/proc/self/cgroup");
    return {std::istreambuf_iterator<char>(file), {}};
}

constexpr const char* c_Root = "/sys/fs/cgroup";

} // namespace

std::optional<std::uint64_t> ReadGroupProcessLimit(std::string_view membership, const std::string& root)
{
    return findLeast(membership, root, readLimit);
}

std::optional<std::uint64_t> ReadFreeGroupProcesses(std::string_view membership, const std::string& root)
{
    return findLeast(membership, root, readFree);
}

std::optional<std::uint64_t> GetFreeGroupProcesses()
{
    return ReadFreeGroupProcesses(readMembership(), c_Root);
}

std::optional<std::uint64_t> GetGroupProcessLimit() noexcept
try
{
    static const std::optional<std::uint64_t> s_limit = ReadGroupProcessLimit(readMembership(), c_Root);
    return s_limit;
}
catch (const std::bad_alloc&)
{
    return std::nullopt;
}

} // namespace LbOs::Linux

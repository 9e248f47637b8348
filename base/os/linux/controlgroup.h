/// Limits that a control group of version 2 sets, as in containers. Internal to the Linux side.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace LbOs::Linux
{

/// The largest number of processes and threads that a group and the groups that contain it allow. `membership` is the
/// text of /proc/<process>/cgroup, `root` the folder where the groups are mounted, without a separator at its end.
/// Empty without a limit.
std::optional<std::uint64_t> ReadGroupProcessLimit(std::string_view membership, const std::string& root);

/// As ReadGroupProcessLimit, minus the processes and threads that the groups already have.
std::optional<std::uint64_t> ReadFreeGroupProcesses(std::string_view membership, const std::string& root);

/// The limit for the current process; read once. Empty if there is no limit or no memory to read it.
std::optional<std::uint64_t> GetGroupProcessLimit() noexcept;

/// How many processes and threads the groups of the current process allow in addition. Empty without a limit.
std::optional<std::uint64_t> GetFreeGroupProcesses();

} // namespace LbOs::Linux

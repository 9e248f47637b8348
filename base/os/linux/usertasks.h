/// The processes and threads of the user. Internal to the Linux side.
#pragma once

#include <cstdint>
#include <string>

namespace LbOs::Linux
{

/// How many threads the processes of the current user have. `root` is the folder with the processes, /proc. Examines
/// each process of the system.
std::uint64_t CountUserTasks(const std::string& root);

} // namespace LbOs::Linux

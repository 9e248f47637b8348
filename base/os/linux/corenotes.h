/// The notes of a core: data about a process that debuggers need in addition to its memory. Internal to the Linux side.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "base/os/linux/memorymap.h"
#include "base/os/stacks.h"

namespace LbOs::Linux
{

/// The bytes of all notes. The calling thread must be tracing all `threads`, which must be stopped; the thread at fault
/// comes first.
std::string MakeCoreNotes(pid_t process, const std::vector<pid_t>& threads,
                          const std::optional<SCrashedThread>& crashed, const std::vector<SMemoryRange>& ranges);

} // namespace LbOs::Linux

/// The memory of another process. Internal to the Linux side.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <sys/types.h>

#include "base/os/linux/descriptor.h"

namespace LbOs::Linux
{

inline constexpr std::uint64_t c_PageSize = 4096;

/// Consecutive pages of one kind.
struct SMemoryRange
{
    std::uint64_t start = 0;
    std::uint64_t end = 0;
    bool isReadable = false;
    bool isWritable = false;
    bool isExecutable = false;
    bool isShared = false;
    std::uint64_t offset = 0; ///< in the file, in bytes
    std::string path;         ///< of the mapped file; empty without one
};

/// In ascending order.
std::vector<SMemoryRange> ReadMemoryRanges(pid_t process);

/// Finds pages that differ from the mapped file or, in memory without a file, from zeros. Used by one thread.
class CPageStates
{
public:
    explicit CPageStates(pid_t process);

    /// The state of each of `count` pages from `start` on: true if the process has changed it. If the kernel does not
    /// answer, all pages count as changed.
    std::vector<bool> FindChanged(std::uint64_t start, std::size_t count) const;

private:
    CDescriptor m_file;
};

} // namespace LbOs::Linux

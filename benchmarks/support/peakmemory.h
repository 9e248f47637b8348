/// The peak memory of the process so far.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

namespace Benchmarks
{

/// In KiB; 0 where the system does not report it.
inline std::uint64_t GetPeakMemory()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
    {
        if (line.starts_with("VmHWM:"))
        {
            return std::strtoull(line.c_str() + sizeof("VmHWM:"), nullptr, 10);
        }
    }
    return 0;
}

} // namespace Benchmarks

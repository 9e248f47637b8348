/// Descriptors of child processes. Internal to the Linux side.
#pragma once

#include <chrono>
#include <thread>

#include <sys/types.h>

#include "base/os/linux/descriptor.h"

namespace LbOs::Linux
{

/// To be called when a child's descriptor is readable but the system does not give the child up: whoever traces it is
/// told first. Without it the wait would turn in circles.
inline void PauseForEnd()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

/// Readable when the child has ended. A test may close it with all that it finds open: then it is opened again, and
/// what has its number meanwhile is left alone.
class CProcessFile
{
public:
    CProcessFile() = default;
    CProcessFile(const CProcessFile&) = delete;
    CProcessFile& operator=(const CProcessFile&) = delete;
    ~CProcessFile() { releaseLost(); }

    /// Sees to it that there is one, if there can be: not where the process is no child any more, since others have
    /// waited for it. Always for the same process.
    void Assert(pid_t process);

    /// As the last Assert left it; negative: none.
    int Get() const noexcept { return m_file.Get(); }

private:
    bool isOwn() const;
    void releaseLost();

    pid_t m_process = -1;
    CDescriptor m_file;
    dev_t m_device = 0;
    ino_t m_node = 0;
};

} // namespace LbOs::Linux

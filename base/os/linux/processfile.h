/// Descriptors of child processes. Internal to the Linux side.
#pragma once

#include <chrono>
#include <optional>
#include <thread>

#include <sys/types.h>

#include "base/os/linux/descriptor.h"

namespace LbOs::Linux
{

/// Call when a child's descriptor is readable but waitpid does not yet report the child, because a tracer is notified
/// first. Avoids a busy loop.
inline void PauseForEnd()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

/// A descriptor that is readable when the child has ended. If a test closes it, it is opened again; a descriptor
/// that reuses the old number is left alone.
class CProcessFile
{
public:
    CProcessFile() = default;
    CProcessFile(const CProcessFile&) = delete;
    CProcessFile& operator=(const CProcessFile&) = delete;
    ~CProcessFile() { releaseLost(); }

    /// Opens the descriptor unless it is open. Opens nothing if other code has waited for the process, which is then no
    /// longer a child. Pass the same process in all calls.
    void Ensure(pid_t process);

    /// Takes ownership of a descriptor that the system opened when it created the process; ignores a negative one, and
    /// one that other code has closed.
    void Adopt(pid_t process, int file);

    /// The status of a process that can no longer be waited for, in the form of waitpid(). Empty before Linux 6.15, and
    /// if no descriptor was open when the process ended.
    std::optional<int> ReadStatus() const;

    /// The descriptor after the last Ensure or Adopt; negative if there is none.
    int Get() const noexcept { return m_file.Get(); }

private:
    void keep(CDescriptor file);
    bool isOwn() const;
    void releaseLost();

    pid_t m_process = -1;
    CDescriptor m_file;
    dev_t m_device = 0;
    ino_t m_node = 0;
};

} // namespace LbOs::Linux

/// Child processes and their descendants.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "base/lbexport.h"
#include "base/os/childoptions.h"

namespace LbOs
{

/// Ends all descendants of the calling process, in any group or session. A child with endsWithOwner should call it
/// before exiting. Takes one system call if there are none, otherwise 1 to 2 ms, up to 3 s if some cannot be killed. No
/// effect on Windows, where the owner's job object ends them. Any thread.
LB_API void EndDescendants() noexcept;

/// A process that was started. For one thread at a time; different objects are independent of each other.
class LB_API CChildProcess
{
public:
    static constexpr std::uint32_t sc_uiInfinite = 0xFFFFFFFFU;

    /// Prepares all starts; otherwise the first start does so. On Linux a fork of the process watches over children
    /// with endsWithOwner and keeps the memory that the process has at that time, so call PrepareStarts while the
    /// process is small. Any thread.
    static void PrepareStarts();

    /// Starts a process; it inherits the handles that are inheritable. Null on failure; then `failure` describes the
    /// failed system call. Any thread.
    static std::unique_ptr<CChildProcess> Start(const SChildOptions& options, std::wstring* failure = nullptr);

    /// See SChildOptions::endsWithOwner. On Linux ends only processes in the child's group.
    ~CChildProcess();

    CChildProcess(const CChildProcess&) = delete;
    CChildProcess& operator=(const CChildProcess&) = delete;

    /// Waits for up to `milliseconds`; true if the process has ended.
    bool Wait(std::uint32_t milliseconds = sc_uiInfinite) const;

    bool IsRunning() const { return !Wait(0); }

    /// Kills the process and its descendants and waits until the process has ended, at most 10 s. The exit status of a
    /// process that was running is then 0 on Windows, -9 on Linux. On Linux with endsWithOwner, the call also searches
    /// for descendants outside the process's group, which takes 1 to 2 ms, up to 3 s if some cannot be killed. If the
    /// process has already ended, descendants are recognised by a variable in their environment. Those that lack the
    /// variable or belong to other users keep running.
    void Terminate();

    /// The exit status of an ended process; on Linux the negative number of the signal that ended it. Empty while the
    /// process runs. If other code in this process has waited for the child or ignores SIGCHLD, the process id may have
    /// been reused: only Terminate ends the descendants then, and before Linux 6.15 the status is empty.
    std::optional<std::int64_t> GetExitStatus();

    /// Afterwards the process and its descendants may outlive this object and the current process.
    void Detach();

    /// The process id; on Linux it may be reused once any code has waited for the process.
    std::uint64_t GetId() const noexcept;

    /// The system's handle to wait for the end of the process, owned by the object. Only for the platform layer. On
    /// Linux, if other code has closed the handle, the result is -1 or belongs to another file; the next Wait opens a
    /// new handle.
    std::intptr_t GetWaitHandle() const noexcept;

private:
    /// The longest wait, in milliseconds, for a process that the system may be unable to end.
    static constexpr std::uint32_t sc_uiLongestEnd = 10000;

    struct SState;
    explicit CChildProcess(std::unique_ptr<SState> state);

    std::unique_ptr<SState> m_state;
};

} // namespace LbOs

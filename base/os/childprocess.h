/// Child processes, with all that they start in turn.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "base/lbexport.h"

namespace LbOs
{

class CChildOutput;

struct SChildOptions
{
    /// The executable's full path; empty: the first word of the command line, looked up as the system does.
    std::wstring program;

    /// With the program's name as its first word, written as LbCommandLine says. Windows hands it on as it stands,
    /// Linux splits it.
    std::wstring commandLine;

    /// Empty: the caller's own.
    std::wstring workingDirectory;

    /// No console window, and nothing behind standard input, output and error; else the child has those of the caller,
    /// on Linux without the input: it is in the background, where reading from a terminal would stop it.
    bool isSilent = false;

    /// Receives what a silent child writes to standard error; null: nothing does. Must exist until the start returns.
    const CChildOutput* errors = nullptr;

    /// The child begins with the signals blocked and ignored that PrepareStarts recorded, whatever has been done to
    /// them since; else, and without such a record, with those of the caller. No effect on Windows.
    bool hasPreparedSignals = false;

    /// The child and the processes that it started end at the latest with its object and with the present process,
    /// however that ends. Without this they may outlive both, and only Terminate ends them.
    bool endsWithOwner = true;
};

/// Ends what the calling process has started and what that has started in turn, in any group or session; for a process
/// with endsWithOwner that is about to end. Costs one system call if there is nothing, else a millisecond or two, and
/// up to 3 s for what the system cannot end. No effect on Windows, where the owner's object does that. Any thread.
LB_API void EndDescendants() noexcept;

/// A process that was started. One thread at a time, but different objects are independent of each other.
class LB_API CChildProcess
{
public:
    static constexpr std::uint32_t sc_uiInfinite = 0xFFFFFFFFU;

    /// Gets ready what all starts need, best while the process is small: on Linux a copy of it watches over what is
    /// started with endsWithOwner, and keeps all the memory that the process has at that time. Without it the first
    /// start does that. Also records which signals the calling thread blocks and the process ignores. Any thread.
    static void PrepareStarts();

    /// Starts a process; it inherits the handles that are inheritable. Null on failure. Any thread.
    static std::unique_ptr<CChildProcess> Start(const SChildOptions& options);

    /// See SChildOptions::endsWithOwner. On Linux that reaches what is in the process's group.
    ~CChildProcess();

    CChildProcess(const CChildProcess&) = delete;
    CChildProcess& operator=(const CChildProcess&) = delete;

    /// Waits for up to `milliseconds`; true when the process has ended.
    bool Wait(std::uint32_t milliseconds = sc_uiInfinite) const;

    bool IsRunning() const { return !Wait(0); }

    /// Ends the process and those that it started, and returns when it is gone, or after 10 s when the system cannot
    /// end it. Its exit status is then 0 on Windows and -9 on Linux. On Linux, with endsWithOwner, what has left the
    /// process's group is looked for; that takes about a millisecond, two where there was something, and up to 3 s for
    /// what the system cannot end. If the process has ended before, its descendants are known by their environment:
    /// programs that were started without it, and those of other users, stay.
    void Terminate();

    /// The exit status of a process that has ended: the program's own, on Linux the negative number of the signal that
    /// ended it. None while it runs, and on Linux before 6.15 when somebody else in the present process has waited for
    /// it, or made the system forget its children. Then only Terminate ends what that process has left behind, since
    /// its number may be another's.
    std::optional<std::int64_t> GetExitStatus();

    /// From now on what was started ends neither with this object nor with the present process.
    void Detach();

    /// The system's number of the process; on Linux another's as soon as somebody has waited for its end.
    std::uint64_t GetNumber() const noexcept;

    /// The system's handle that waits for the end, owned by the object. For the platform layer's own use. On Linux it
    /// is another file's, or -1, when somebody has closed it; the next Wait gets another one.
    std::intptr_t GetWaitHandle() const noexcept;

private:
    /// One that the system cannot end is not waited for any longer.
    static constexpr std::uint32_t sc_uiLongestEnd = 10000;

    struct SState;
    explicit CChildProcess(std::unique_ptr<SState> state);

    std::unique_ptr<SState> m_state;
};

} // namespace LbOs

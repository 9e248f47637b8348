/// System calls that only tests need. Part of the tests, in no library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace LbOs
{

/// Loads a shared library that is not in use and unloads it. False if it cannot be loaded.
bool LoadAndUnloadModule(const std::wstring& path);

/// The running children of the current process.
std::vector<unsigned long> ListChildren();

/// Creates a named pipe; opening it for reading waits for a writer. False if the platform has no pipes in folders.
bool MakePipe(const std::wstring& path);

/// Creates a symbolic link to a file or directory, which need not exist; a relative target refers to the link's folder.
/// False if that is impossible.
bool MakeLink(const std::wstring& path, const std::wstring& target);

/// Forks; the child calls `function` and exits with its result, without running destructors. After 60 s a signal
/// ends the child. Returns the child's exit status, -1 for a signal; empty on platforms without fork.
std::optional<int> RunInFork(const std::function<int()>& function);

/// Like RunInFork, but the child has the same process id as its parent: each is the first process of its own namespace.
/// Empty if the system does not allow that.
std::optional<int> RunInForkWithSameId(const std::function<int()>& function);

/// Drops all rights of the current process beyond those of an ordinary user; no effect without such rights. False if
/// rights cannot be dropped.
bool GiveUpRights();

/// Mounts `folder` on the folder `place` and so hides the contents of `place`. Only the current process sees the mount,
/// until it ends, so call this in a fork. False if that is impossible.
bool MountFolder(const std::wstring& place, const std::wstring& folder);

/// Calls `function` on a thread with pending cancellation. True if `function` returned. False if the platform has
/// no cancellation.
bool CallCanceled(const std::function<void()>& function);

/// Forks and returns in both processes: 0 in the fork, which a signal ends after 60 s, and the fork's process id in the
/// original. Empty on platforms without fork.
std::optional<long> Fork();

/// Waits until a fork has ended.
void WaitForFork(long id);

/// Writes to a stream and flushes all streams; the stream calls `function` while the C library holds the lock of its
/// stream list. False if streams have no such callback.
bool CallWhileFlushing(void (*function)());

/// Resets all real-time signals to their default, as any code in the process may do. False on platforms without them.
bool ResetRealTimeSignals();

/// Returns what `function` writes to standard output, which is a small non-blocking pipe for that time. Empty if pipes
/// always block.
std::optional<std::string> CaptureThroughFullPipe(const std::function<void()>& function);

/// Opens an existing file exclusively for the lifetime of the result; null if that is impossible.
std::shared_ptr<void> HoldFile(const std::wstring& path);

/// Prevents reading a part of a file for the lifetime of the result; null if that is impossible.
std::shared_ptr<void> HoldBytes(const std::wstring& path, std::uint32_t offset, std::uint32_t size);

/// Makes opening files fail, or succeed again. False if that is impossible.
bool SetFilesForbidden(bool areForbidden);

/// Forks; the child calls `function`. Returns the growth of the child's peak memory in bytes; empty if the function
/// returned false, and on platforms without fork.
std::optional<std::uint64_t> MeasurePeakMemory(const std::function<bool()>& function);

/// Interrupts the process with a signal every half millisecond, or stops doing so. False if that is impossible.
bool SetInterruptedOften(bool isInterrupted);

/// Makes memory allocation from the system fail, or succeed again. False if that is impossible.
bool SetPagesForbidden(bool areForbidden);

/// Makes queued signals fail, or succeed again. False on platforms without queued signals.
bool SetSignalsForbidden(bool areForbidden);

/// Creates shared memory that everyone can read and that belongs to another user or a group; it exists as long as the
/// result. Null if the current user may not do that.
std::shared_ptr<void> MakeMemoryOfAnotherUser(const std::wstring& name, std::size_t size);

/// True if the named event or shared memory exists and only the current user has access.
bool IsForOwnUserOnly(const std::wstring& name);

/// Moves the current process to its parent's process group. False if there are no groups.
bool JoinGroupOfParent();

/// Collects the status of all ended children of the current process, like a test that assumes that no other code starts
/// children. False on systems where a process can be waited for more than once.
bool WaitForEndedChildren();

/// Makes the system discard ended children of the current process at once, or keep them until they are waited for.
/// False on systems that keep them as long as a handle exists.
bool SetChildrenForgotten(bool areForgotten);

/// True if the system still knows the status of a forgotten child.
bool RemembersForgottenChildren();

/// Makes the system forget children and blocks signals of the calling thread, or undoes both. False on platforms
/// without signals.
bool SetSignalsDisturbed(bool areDisturbed);

/// The signals that the process ignores and that the calling thread blocks, as text for comparisons.
std::wstring DescribeSignals();

/// Arms all timers of setitimer() for an hour, or disarms them. False if there are no such timers.
bool SetTimersArmed(bool areArmed);

/// Arms the timer of alarm() for an hour.
void SetAlarm();

/// The number of armed timers of setitimer().
int CountArmedTimers();

/// Causes the signal with this name (like "SIGPIPE") in the way in which tests usually cause it, with its default
/// action or a handler. Returns false without effect if the system has no such signal.
bool CauseSignal(const std::wstring& name);

/// Number and name of each signal that ends a process by default; empty on platforms without signals.
std::vector<std::pair<int, std::string>> ListEndingSignals();

/// Raises an exception of the system with a code that belongs to the program. Returns on platforms without them.
void RaiseOwnException();

/// If the current process has a keeper, which is the process that cleans up after it, kills the keeper and waits until
/// the keeper has ended.
void EndKeeper();

/// Waits until a child of the current process has ended, but does not collect its status.
void WaitForEnd(unsigned long process);

/// Ends a process and hides its end from its parent, as a debugger can, for the lifetime of the result; null if that is
/// impossible.
std::shared_ptr<void> HoldEnd(std::uint64_t process);

/// Gives new files of the current process no access rights, or the former ones again. False if there is no umask.
bool SetRightsMasked(bool areMasked);

/// Closes a system handle that belongs to other code, as a test that closes all files does. False on platforms where a
/// test cannot guess handles.
bool CloseForOthers(std::intptr_t handle);

/// Sets a named event a million times. False if events do not count.
bool FloodEvent(const std::wstring& name);

/// The system's id of the calling thread.
unsigned long GetOwnThreadId();

/// True if the thread of the current process with this id has ended.
bool HasThreadEnded(unsigned long id);

/// Ends the process with std::quick_exit(0), or std::exit(0) on platforms that lack it.
[[noreturn]] void ExitQuickly();

/// Ends the calling thread, possibly the first one; the process continues with its other threads.
[[noreturn]] void LeaveThread();

/// Makes the system dump the current process's memory into its working directory on a crash. False if the system writes
/// no dumps.
bool AllowDumps();

/// Limits the current process to `bytes` of memory beyond what it has. False if the system has no such limit.
bool LimitMemory(std::size_t bytes);

/// The number of files that the current process may open; empty if there is no such limit.
std::optional<std::uint64_t> GetOpenFileLimit();

/// Sets the soft limit of open files. False if there is no such limit.
bool SetOpenFileLimit(std::uint64_t count);

/// The command line of the current process, for code without access to main's arguments.
std::vector<std::wstring> GetOwnArguments();

/// Removes the names of the events and the shared memory that a run has passed to its child `process` as arguments.
/// False if the system keeps the names of existing objects.
bool RemoveObjectNames(unsigned long process);

/// The number of processors that the calling thread may use, at least 1.
std::uint32_t CountOwnProcessors();

} // namespace LbOs

/// What only tests ask of the system. A part of the tests, in no library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace LbOs
{

/// Loads a shared library that nothing else uses, and unloads it. False when it cannot be loaded.
bool LoadAndUnloadModule(const std::wstring& path);

/// The processes that the present one has started and that run.
std::vector<unsigned long> ListChildren();

/// Makes a named pipe that stands in its folder like a file; its reader waits for a writer. False where there are none.
bool MakePipe(const std::wstring& path);

/// Makes a symbolic link to a file or directory, which may be missing; a relative target is meant from the link's
/// folder. False where that cannot be.
bool MakeLink(const std::wstring& path, const std::wstring& target);

/// Forks; the child calls `function` and ends with what it gives, without any destructors, or with a signal after 60 s.
/// The child's exit status, -1 for a signal; none where processes do not fork.
std::optional<int> RunInFork(const std::function<int()>& function);

/// As RunInFork, but the child has its parent's number: each is the first process of a name space of its own. None
/// where the system does not allow that.
std::optional<int> RunInForkOfSameNumber(const std::function<int()>& function);

/// The present process has no rights any more but those that everybody has, unless it had no others anyway. False where
/// rights cannot be given up.
bool GiveUpRights();

/// Shows the content of `folder` at `place` too, an empty folder, as long as the present process lives and to it only.
/// Called in a fork. False where that cannot be.
bool MountFolder(const std::wstring& place, const std::wstring& folder);

/// Calls `function` on a thread whose cancellation is pending. True when it came back. False where threads are not
/// canceled.
bool CallCanceled(const std::function<void()>& function);

/// Forks, and both go on from here: 0 in the copy, which ends with a signal after 60 s at the latest, its number in the
/// original. None where processes do not fork.
std::optional<long> Fork();

/// Waits until a copy has ended.
void WaitForFork(long number);

/// Writes to a stream and flushes all streams; `function` is called from there, while the run-time holds the lock of
/// the list of streams. False where streams call nothing.
bool CallWhileFlushing(void (*function)());

/// Gives every real-time signal back to the system, as whoever has use for one may do. False where there are none.
bool ResetRealTimeSignals();

/// What `function` writes to standard output, which is a small pipe meanwhile that refuses bytes when it is full. None
/// where pipes always block.
std::optional<std::string> CaptureThroughFullPipe(const std::function<void()>& function);

/// Opens an existing file for as long as the result lives, and lets nobody else open it; null where that cannot be.
std::shared_ptr<void> HoldFile(const std::wstring& path);

/// Lets nobody read a part of a file as long as the result lives; null where that cannot be.
std::shared_ptr<void> HoldBytes(const std::wstring& path, std::uint32_t offset, std::uint32_t size);

/// Has the system open no further files, or open them again. False where it cannot be told to.
bool SetFilesForbidden(bool areForbidden);

/// Forks; the child calls `function`. The bytes by which the child's memory had risen at its peak; none when the
/// function says false, and where processes do not fork.
std::optional<std::uint64_t> MeasurePeakMemory(const std::function<bool()>& function);

/// The text for the first graphics card that has a driver in `folder`, which is laid out as the kernel lays out its
/// own; none where there is no such folder.
std::optional<std::wstring> DescribeGraphicsIn(const std::wstring& folder);

/// Has a signal interrupt the process each half millisecond, or no more. False where that cannot be.
bool SetInterruptedOften(bool isInterrupted);

/// Makes the system refuse pages, or give them again. False where it cannot be told to.
bool SetPagesForbidden(bool areForbidden);

/// Makes the system refuse signals that it would have to queue, or take them again. False where there are none.
bool SetSignalsForbidden(bool areForbidden);

/// Whether the named event or shared memory of that name exists and may be used by the present user and nobody else.
bool IsForOwnUserOnly(const std::wstring& name);

/// The present process goes over to the process group of its parent. False where there are no groups.
bool JoinGroupOfParent();

/// Waits for all children of the present process that have ended, as a test may do that knows of its own only. False
/// where a process can be waited for more than once.
bool WaitForEndedChildren();

/// Has the system forget the present process's children as soon as they end, or keep them until they are waited for.
/// False where it keeps them for whoever has a handle.
bool SetChildrenForgotten(bool areForgotten);

/// Ends the process that watches over the present one, if there is one, and returns when it is gone.
void EndKeeper();

/// Waits until a process that the present one has started has ended, and leaves that to whoever waits for it next.
void WaitForEnd(unsigned long process);

/// Ends a process and keeps that from whoever has started it, as a debugger may, as long as the result lives; null
/// where that cannot be.
std::shared_ptr<void> HoldEnd(std::uint64_t process);

/// Takes all rights from the files that the present process makes, or none any more. False where there is no such mask.
bool SetRightsMasked(bool areMasked);

/// Closes a system's handle that is another's, as a test does that closes all that it finds open. False where handles
/// are no numbers that anybody finds.
bool CloseForOthers(std::intptr_t handle);

/// Sets a named event a million times at once, as whoever floods it would. False where events do not count.
bool FloodEvent(const std::wstring& name);

/// The system's number of the calling thread.
unsigned long GetThreadNumber();

/// Whether a thread of the present process has ended.
bool HasThreadEnded(unsigned long number);

/// Ends the calling thread, which may be the first one: the process goes on with its others.
[[noreturn]] void LeaveThread();

/// Lets the system dump the memory of the present process into its working directory when it crashes. False where the
/// system dumps nothing.
bool AllowDumps();

/// Lets the present process have no more than `bytes` of memory beyond what it has. False where the system does not see
/// to that.
bool LimitMemory(std::size_t bytes);

/// Number of files that the present process may have open; none where there is no such limit.
std::optional<std::uint64_t> GetOpenFileLimit();

/// Sets that number, for as long as nobody raises it again. False where there is no such limit.
bool SetOpenFileLimit(std::uint64_t count);

/// The words that the present process was started with, for code that main() tells nothing.
std::vector<std::wstring> GetOwnArguments();

/// How many processors the calling thread may use, at least 1.
std::uint32_t CountOwnProcessors();

} // namespace LbOs

/// What only tests ask of the system. A part of the tests, in no library.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace LbOs
{

/// Loads a shared library that nothing else uses, and unloads it. False when it cannot be loaded.
bool LoadAndUnloadModule(const std::wstring& path);

/// Makes a named pipe that stands in its folder like a file. False where there are none.
bool MakePipeFile(const std::wstring& path);

/// Forks; the child calls `function` and ends with what it gives, without any destructors, or with a signal after 60 s.
/// The child's exit status, -1 for a signal; none where processes do not fork.
std::optional<int> RunInFork(const std::function<int()>& function);

/// As RunInFork, but the child has its parent's number: each is the first process of a name space of its own. None
/// where the system does not allow that.
std::optional<int> RunInForkOfSameNumber(const std::function<int()>& function);

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

/// Makes a named pipe, whose reader waits for a writer. False where files are no pipes.
bool MakePipe(const std::wstring& path);

/// Opens an existing file for as long as the result lives, and lets nobody else open it; null where that cannot be.
std::shared_ptr<void> HoldFile(const std::wstring& path);

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

} // namespace LbOs

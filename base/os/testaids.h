/// What only tests ask of the system. A part of the tests, in no library.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace LbOs
{

/// Loads a shared library that nothing else uses, and unloads it. False when it cannot be loaded.
bool LoadAndUnloadModule(const std::wstring& path);

/// Forks; the child calls `function` and ends with what it gives, without any destructors, or with a signal after 60 s.
/// The child's exit status, -1 for a signal; none where processes do not fork.
std::optional<int> RunInFork(const std::function<int()>& function);

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

/// Has a signal interrupt the process each half millisecond, or no more. False where that cannot be.
bool SetInterruptedOften(bool isInterrupted);

/// Makes the system refuse pages, or give them again. False where it cannot be told to.
bool SetPagesForbidden(bool areForbidden);

/// Makes the system refuse signals that it would have to queue, or take them again. False where there are none.
bool SetSignalsForbidden(bool areForbidden);

} // namespace LbOs

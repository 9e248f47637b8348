/// The threads of this process as the kernel lists them. Internal to base/os. Allocates nothing, so that it can be used
/// while other threads are stopped.
#pragma once

#include <cstdint>

#include <sys/types.h>

namespace LbOs::Linux
{

/// Calls `function(context, thread)` for all other threads until it returns false. Returns false in that case, and if
/// there is no usable list of threads: a list without the calling thread belongs to another process namespace.
bool ForOtherThreads(bool (*function)(void* context, pid_t thread), void* context) noexcept;

template<typename F>
bool ForOtherThreads(F function) noexcept
{
    return ForOtherThreads([](void* context, pid_t thread) { return (*static_cast<F*>(context))(thread); }, &function);
}

/// True for a thread that will never run again: it has ended, or it is the main thread and has exited while the other
/// threads continue.
bool HasEnded(pid_t thread) noexcept;

/// The signals that a thread blocks, bit 0 for signal 1; 0 if the thread has ended or the kernel does not answer.
std::uint64_t ReadBlockedSignals(pid_t thread) noexcept;

} // namespace LbOs::Linux

/// The process-wide thread pool.
#pragma once

#include <functional>
#include <memory>

#include "base/inoncopyable.h"
#include "base/lbexport.h"

/// A fixed number of threads, started with the first task: one per hardware thread, or a single one if the system
/// allows the user few processes. Usable from any thread.
class LB_API LbThreadPool : public INonCopyable
{
public:
    /// A submitted task; copies refer to the same task.
    class LB_API CTask
    {
    public:
        /// Waits without limit until the task has ended; rethrows the task's exception to each waiter. A task may wait
        /// for another task: on a pool thread, Wait runs a task that has not started yet.
        void Wait() const;

        /// Cancels a task that has not started: it never starts, Wait returns at once, and the result is true.
        /// Otherwise has no effect and returns false.
        bool Cancel() const;

    private:
        friend class LbThreadPool;
        struct SState;
        std::shared_ptr<SState> m_state;
    };

    /// The pool, created on first use and again after a shut-down.
    static LbThreadPool& GetInstance();

    /// True if the pool exists: it was created and not shut down.
    static bool Exists();

    /// Runs all submitted tasks to their end, then ends the threads; waits without limit. Does nothing if there is no
    /// pool. Must not be called by a task, nor while other threads may submit tasks.
    static void Shutdown();

    /// Runs `function` on a pool thread. Tasks start in order of submission. The first call also waits until the
    /// threads have started, so it must not be made while a library is being loaded. Throws std::system_error if the
    /// pool has no thread and the system cannot start one.
    CTask Run(std::function<void()> function);

    /// Number of pool threads, at least 1.
    unsigned GetThreadCount() const noexcept;

    ~LbThreadPool();

private:
    LbThreadPool();

    struct SShared;
    std::unique_ptr<SShared> m_shared;
};

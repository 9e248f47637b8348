/// The process-wide thread pool.
#pragma once

#include <functional>
#include <memory>

#include "base/inoncopyable.h"
#include "base/lbexport.h"

/// A fixed number of threads, started with the first task: one per hardware thread, or a single one if the system
/// allows the user few processes. If the system cannot start all of them, the pool has fewer. Usable from any thread.
class LB_API LbThreadPool : public INonCopyable
{
public:
    /// A submitted task; copies refer to the same task.
    class LB_API CTask
    {
    public:
        /// Waits without limit until the task has ended; rethrows the task's exception to each waiter. A task may wait
        /// for another task: on a pool thread, Wait itself runs the awaited task if it has not started yet.
        void Wait() const;

        /// If the task has not started, prevents its start and returns true; Wait then returns at once. Otherwise has
        /// no effect and returns false.
        bool Cancel() const;

    private:
        friend class LbThreadPool;
        struct SState;
        std::shared_ptr<SState> m_state;
    };

    /// The pool, created on first use. It can also be used again after a shut-down.
    static LbThreadPool& GetInstance();

    /// True if GetInstance has been called and Shutdown has not been called since.
    static bool Exists();

    /// Runs all submitted tasks to their end, then ends the threads; waits without limit. Does nothing if the pool does
    /// not exist. Tasks must not call it, and no other thread may submit tasks during the call.
    static void Shutdown();

    /// Runs `function` on a pool thread. Tasks start in order of submission. The first call also waits until the
    /// threads have started, so it must not be made while a library is being loaded. Throws std::system_error if the
    /// pool has no thread and the system cannot start one.
    CTask Run(std::function<void()> function);

    /// The intended number of pool threads, at least 1; fewer run if the system cannot start all.
    unsigned GetThreadCount() const noexcept;

    ~LbThreadPool();

private:
    LbThreadPool();

    struct SShared;
    std::unique_ptr<SShared> m_shared;
};

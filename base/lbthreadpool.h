/// The process-wide thread pool.
#pragma once

#include <functional>
#include <memory>

#include "base/inoncopyable.h"
#include "base/lbexport.h"

/// A fixed number of threads, one per hardware thread, started with the first task. Any thread may use it.
class LB_API LbThreadPool : public INonCopyable
{
public:
    /// A task handed in; copies refer to the same task.
    class LB_API CTask
    {
    public:
        /// Waits without limit until the task has ended, and passes on the exception that left it, to each waiter.
        /// A task may wait for another: on a pool thread, one that has not started yet is run by this.
        void Wait() const;

        /// Takes the task back: true when it had not started, then it never will, and Wait returns at once. False, and
        /// without effect, when it has.
        bool Cancel() const;

    private:
        friend class LbThreadPool;
        struct SState;
        std::shared_ptr<SState> m_state;
    };

    /// The pool, made on first use and again after a shut-down.
    static LbThreadPool& GetInstance();

    /// True when the pool has been made and not shut down.
    static bool Exists();

    /// Lets every task handed in run to its end, then ends the threads; waits without limit. Does nothing without a
    /// pool. Must not be called by a task, nor while other threads may hand in tasks.
    static void Shutdown();

    /// Runs `function` on a pool thread. Tasks start in the order in which they are handed in. The first one also waits
    /// until the threads have started, so it must not be handed in while a library is being loaded.
    CTask Run(std::function<void()> function);

    /// Number of pool threads, at least 1.
    unsigned GetThreadCount() const noexcept;

    ~LbThreadPool();

private:
    LbThreadPool();

    struct SShared;
    std::unique_ptr<SShared> m_shared;
};

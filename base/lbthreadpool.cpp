#include "base/lbthreadpool.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "base/os/crash.h"
#include "base/os/process.h"
#include "base/os/processes.h"

namespace
{

/// True between the first use of the pool and its shut-down.
std::atomic<bool> s_exists = false;

thread_local bool t_isPoolThread = false;

} // namespace

struct LbThreadPool::CTask::SState
{
    explicit SState(std::function<void()> task) : function(std::move(task)) {}

    /// Runs the task unless another thread has taken it.
    void Run();
    void Wait();
    bool Cancel();

    void End(std::exception_ptr caught);

    std::function<void()> function;
    std::atomic<bool> isTaken = false;

    std::mutex mutex;
    std::condition_variable ended;
    bool hasEnded = false;
    std::exception_ptr failure;
};

void LbThreadPool::CTask::SState::Run()
{
    if (isTaken.exchange(true))
    {
        return;
    }
    std::exception_ptr caught;
    try
    {
        function();
    }
    catch (...)
    {
        caught = std::current_exception();
    }
    End(std::move(caught));
}

void LbThreadPool::CTask::SState::End(std::exception_ptr caught)
{
    // Waiting threads continue only after the task has released the objects that it captured.
    function = nullptr;

    const std::lock_guard lock(mutex);
    failure = std::move(caught);
    hasEnded = true;
    ended.notify_all();
}

bool LbThreadPool::CTask::SState::Cancel()
{
    if (isTaken.exchange(true))
    {
        return false;
    }
    End(nullptr);
    return true;
}

void LbThreadPool::CTask::SState::Wait()
{
    if (t_isPoolThread)
    {
        // If all other pool threads are waiting too, no thread is left to start the task.
        Run();
    }
    std::unique_lock lock(mutex);
    ended.wait(lock, [this] { return hasEnded; });
    if (failure)
    {
        std::rethrow_exception(failure);
    }
}

struct LbThreadPool::SShared
{
    void Start(std::unique_lock<std::mutex>& lock);
    void Stop();
    void Work();

    const unsigned threadCount = LbOs::HasFewProcesses() ? 1U : std::max(1U, std::thread::hardware_concurrency());

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::shared_ptr<CTask::SState>> queue;
    std::vector<std::thread> threads;
    std::condition_variable arrived;
    unsigned arrivedCount = 0; ///< threads that have become ready for tasks
    unsigned running = 0;      ///< tasks that are running
    bool isStopping = false;

    std::mutex stopMutex; ///< held during a shut-down, so that only one runs at a time
};

/// Starts the threads if there are none and waits until all are ready. Without this wait, a heap tracker could count
/// what a thread allocates at its start.
void LbThreadPool::SShared::Start(std::unique_lock<std::mutex>& lock)
{
    if (!threads.empty())
    {
        return;
    }
    threads.reserve(threadCount);
    try
    {
        while (threads.size() < threadCount)
        {
            threads.emplace_back([this] { Work(); });
        }
    }
    catch (const std::system_error&)
    {
        // The system cannot start more threads; the started ones do all the work.
        if (threads.empty())
        {
            throw;
        }
    }
    arrived.wait(lock, [this] { return arrivedCount == threads.size(); });
}

void LbThreadPool::SShared::Work()
{
    t_isPoolThread = true;
    LbOs::SetCurrentThreadName(L"LbThreadPool");
    const LbOs::CCrashStack crashStack;
    std::unique_lock lock(mutex);
    ++arrivedCount;
    arrived.notify_all();
    for (;;)
    {
        // A running task may add other tasks, so no thread ends before the last task has ended.
        changed.wait(lock, [this] { return !queue.empty() || (isStopping && running == 0); });
        if (queue.empty())
        {
            return;
        }
        std::shared_ptr<CTask::SState> task = std::move(queue.front());
        queue.pop_front();
        ++running;
        lock.unlock();
        task->Run();
        task.reset();
        lock.lock();
        --running;
        if (isStopping && running == 0)
        {
            changed.notify_all();
        }
    }
}

void LbThreadPool::SShared::Stop()
{
    const std::lock_guard stopLock(stopMutex);
    {
        const std::lock_guard lock(mutex);
        isStopping = true;
        changed.notify_all();
    }
    // Joins without holding `mutex`, which the ending threads need. No other thread changes the list meanwhile: Run
    // starts threads only if the list is empty.
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    const std::lock_guard lock(mutex);
    threads.clear();
    arrivedCount = 0;
    isStopping = false;
}

void LbThreadPool::CTask::Wait() const
{
    if (m_state)
    {
        m_state->Wait();
    }
}

bool LbThreadPool::CTask::Cancel() const
{
    if (!m_state || !m_state->Cancel())
    {
        return false;
    }
    SShared& shared = *GetInstance().m_shared;
    const std::lock_guard lock(shared.mutex);
    std::erase(shared.queue, m_state);
    return true;
}

LbThreadPool::LbThreadPool() : m_shared(std::make_unique<SShared>()) {}

LbThreadPool::~LbThreadPool() = default;

LbThreadPool& LbThreadPool::GetInstance()
{
    // Never destroyed: if the process ends without a shut-down, other threads may still use the pool, and a destructor
    // that waits for the threads could hang, because the system may already have ended those threads.
    static LbThreadPool& pool = *new LbThreadPool;
    s_exists = true;
    return pool;
}

bool LbThreadPool::Exists()
{
    return s_exists;
}

void LbThreadPool::Shutdown()
{
    if (s_exists)
    {
        GetInstance().m_shared->Stop();
        s_exists = false;
    }
}

LbThreadPool::CTask LbThreadPool::Run(std::function<void()> function)
{
    CTask task;
    task.m_state = std::make_shared<CTask::SState>(std::move(function));
    std::unique_lock lock(m_shared->mutex);
    m_shared->Start(lock);
    m_shared->queue.push_back(task.m_state);
    m_shared->changed.notify_one();
    return task;
}

unsigned LbThreadPool::GetThreadCount() const noexcept
{
    return m_shared->threadCount;
}

#include "base/lbmessagedispatcher.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "base/lbdiagnostics.h"
#include "base/os/crash.h"
#include "base/os/process.h"

namespace
{

/// True between the first use of the dispatcher and its shut-down.
std::atomic<bool> s_exists = false;

thread_local bool t_isDispatcherThread = false;

void handle(const std::function<void()>& message)
{
    try
    {
        message();
    }
    catch (const std::exception& exception)
    {
        LbDiagnostics::Trace(LbFormat(L"LbMessageDispatcher: a message has thrown: %S", exception.what()));
    }
    catch (...)
    {
        LbDiagnostics::Trace(L"LbMessageDispatcher: a message has thrown an unknown exception");
    }
}

} // namespace

struct LbMessageDispatcher::SShared
{
    void Work();
    void Stop();

    std::mutex mutex;
    std::condition_variable changed; ///< wakes the dispatcher thread on a new message or on shut-down
    std::condition_variable handled; ///< wakes threads in Flush when a message has been handled
    std::deque<std::function<void()>> queue;
    std::uint64_t postedCount = 0;
    std::uint64_t handledCount = 0;
    std::thread thread;
    std::condition_variable ready; ///< wakes threads in Start when the dispatcher thread has begun
    bool hasThread = false;
    bool isReady = false;
    bool isStopping = false;

    std::mutex stopMutex; ///< held during a shut-down, so that only one runs at a time
};

void LbMessageDispatcher::SShared::Work()
{
    t_isDispatcherThread = true;
    LbOs::SetCurrentThreadName(L"LbMessages");
    const LbOs::CCrashStack crashStack;
    std::unique_lock lock(mutex);
    isReady = true;
    ready.notify_all();
    for (;;)
    {
        changed.wait(lock, [this] { return !queue.empty() || isStopping; });
        if (queue.empty())
        {
            return;
        }
        std::function<void()> message = std::move(queue.front());
        queue.pop_front();
        lock.unlock();
        handle(message);
        // The message counts as handled only after it has released the objects that it captured.
        message = nullptr;
        lock.lock();
        ++handledCount;
        handled.notify_all();
    }
}

void LbMessageDispatcher::SShared::Stop()
{
    const std::lock_guard stopLock(stopMutex);
    {
        const std::lock_guard lock(mutex);
        if (!hasThread)
        {
            return;
        }
        isStopping = true;
        changed.notify_all();
    }
    // Joins without holding `mutex`, which the ending thread needs. No other thread uses `thread` while hasThread is
    // true.
    thread.join();
    const std::lock_guard lock(mutex);
    hasThread = isReady = false;
    isStopping = false;
}

LbMessageDispatcher::LbMessageDispatcher() : m_shared(std::make_unique<SShared>()) {}

LbMessageDispatcher::~LbMessageDispatcher() = default;

LbMessageDispatcher& LbMessageDispatcher::GetInstance()
{
    // Never destroyed: if the process ends without a shut-down, other threads may still post, and a destructor that
    // waits for the thread could hang, because the system may already have ended that thread.
    static LbMessageDispatcher& dispatcher = *new LbMessageDispatcher;
    s_exists = true;
    return dispatcher;
}

bool LbMessageDispatcher::Exists()
{
    return s_exists;
}

void LbMessageDispatcher::Shutdown()
{
    if (s_exists)
    {
        GetInstance().m_shared->Stop();
        s_exists = false;
    }
}

bool LbMessageDispatcher::Start()
{
    std::unique_lock lock(m_shared->mutex);
    if (!m_shared->hasThread)
    {
        try
        {
            m_shared->thread = std::thread([shared = m_shared.get()] { shared->Work(); });
            m_shared->hasThread = true;
        }
        catch (const std::system_error& error)
        {
            LbDiagnostics::Trace(LbFormat(L"LbMessageDispatcher: no thread: %S", error.what()));
            return false;
        }
    }
    // Waits until the thread runs. Otherwise a heap tracker could count what the thread allocates at its start.
    m_shared->ready.wait(lock, [this] { return m_shared->isReady || !m_shared->hasThread; });
    return m_shared->hasThread && !m_shared->isStopping;
}

bool LbMessageDispatcher::IsRunning() const
{
    const std::lock_guard lock(m_shared->mutex);
    return m_shared->hasThread && !m_shared->isStopping;
}

bool LbMessageDispatcher::Post(std::function<void()> message)
{
    const std::lock_guard lock(m_shared->mutex);
    if (!m_shared->hasThread || m_shared->isStopping)
    {
        return false;
    }
    m_shared->queue.push_back(std::move(message));
    ++m_shared->postedCount;
    m_shared->changed.notify_one();
    return true;
}

void LbMessageDispatcher::Flush()
{
    if (t_isDispatcherThread)
    {
        // A message cannot wait for its own end.
        return;
    }
    std::unique_lock lock(m_shared->mutex);
    // The thread handles all posted messages before it ends, so its state does not matter here.
    const std::uint64_t awaited = m_shared->postedCount;
    m_shared->handled.wait(lock, [this, awaited] { return m_shared->handledCount >= awaited; });
}

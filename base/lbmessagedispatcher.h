/// The process-wide message dispatcher: one thread that handles messages in the order in which they were posted.
#pragma once

#include <functional>
#include <memory>

#include "base/inoncopyable.h"
#include "base/lbexport.h"

/// Usable from any thread. Exceptions that leave a message are traced (LbDiagnostics) and dropped.
class LB_API LbMessageDispatcher : public INonCopyable
{
public:
    /// Returns the dispatcher. Creates it on first use, but does not start its thread.
    static LbMessageDispatcher& GetInstance();

    /// True if GetInstance has been called and Shutdown has not been called since.
    static bool Exists();

    /// Waits without limit until the thread has handled all posted messages and ended; Exists then returns false. Does
    /// nothing if the dispatcher does not exist. Messages must not call it. The dispatcher can be started again.
    static void Shutdown();

    /// Starts the thread if it is not running and waits until it has begun; true if it runs afterwards.
    bool Start();
    bool IsRunning() const;

    /// Posts a message. If the thread is not running, drops the message and returns false.
    bool Post(std::function<void()> message);

    /// Waits without limit until all messages posted before are handled. Returns at once if the thread is not running,
    /// or if a message calls it, because a message cannot wait for itself.
    void Flush();

    ~LbMessageDispatcher();

private:
    LbMessageDispatcher();

    struct SShared;
    std::unique_ptr<SShared> m_shared;
};

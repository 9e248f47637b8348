/// The process-wide message dispatcher: one thread that handles messages in the order in which they were posted.
#pragma once

#include <functional>
#include <memory>

#include "base/inoncopyable.h"
#include "base/lbexport.h"

/// Any thread may use it. Exceptions that leave a message are traced (LbDiagnostics) and dropped.
class LB_API LbMessageDispatcher : public INonCopyable
{
public:
    /// The dispatcher, made on first use; its thread is not started by this.
    static LbMessageDispatcher& GetInstance();

    /// True when it has been made and not shut down.
    static bool Exists();

    /// Handles the messages posted so far, ends the thread (waiting without limit) and unmakes the dispatcher. Does
    /// nothing without one. Must not be called by a message.
    static void Shutdown();

    /// Starts the thread and waits until it has begun; true when it runs afterwards.
    bool Start();
    bool IsRunning() const;

    /// Hands in a message; false, and the message is dropped, when the thread is not running.
    bool Post(std::function<void()> message);

    /// Waits without limit until all messages posted before have been handled. Returns at once when not running,
    /// and when called by a message, which cannot wait for itself.
    void Flush();

    ~LbMessageDispatcher();

private:
    LbMessageDispatcher();

    struct SShared;
    std::unique_ptr<SShared> m_shared;
};

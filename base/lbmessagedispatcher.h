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
    /// The dispatcher, created on first use. Does not start its thread.
    static LbMessageDispatcher& GetInstance();

    /// True if the dispatcher exists: it was created and not shut down.
    static bool Exists();

    /// Handles the messages posted so far, ends the thread (waiting without limit) and discards the dispatcher. Does
    /// nothing if there is no dispatcher. Must not be called by a message.
    static void Shutdown();

    /// Starts the thread and waits until it has begun; true if it runs afterwards.
    bool Start();
    bool IsRunning() const;

    /// Posts a message. If the thread is not running, drops the message and returns false.
    bool Post(std::function<void()> message);

    /// Waits without limit until all messages posted before are handled. Returns at once if the thread is not
    /// running, and when called by a message, which cannot wait for itself.
    void Flush();

    ~LbMessageDispatcher();

private:
    LbMessageDispatcher();

    struct SShared;
    std::unique_ptr<SShared> m_shared;
};

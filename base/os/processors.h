/// The processors that threads run on.
#pragma once

#include <memory>

#include "base/lbexport.h"
#include "base/os/childprocess.h"

namespace LbOs
{

/// Temporarily restricts the processors that a thread may use. Two processes that alternate in short turns need only a
/// fifth of the time if they share a processor, because the system need not wake another processor for each turn. Has
/// no effect on failure, or on Windows, where sharing would gain nothing.
class LB_API CThreadProcessors
{
public:
    CThreadProcessors();
    ~CThreadProcessors();

    CThreadProcessors(const CThreadProcessors&) = delete;
    CThreadProcessors& operator=(const CThreadProcessors&) = delete;

    /// Stores the processors that the calling thread may use now.
    void Read();

    /// Binds the calling thread and the main thread of `child` to the caller's current processor. The child's thread
    /// should be asleep. Each of the two threads calls Restore for itself.
    void ShareProcessorWith(const CChildProcess& child);

    /// Restores the stored processors of the calling thread. No effect without a Read since the last Restore.
    void Restore();

private:
    struct SState;
    std::unique_ptr<SState> m_state;
};

} // namespace LbOs

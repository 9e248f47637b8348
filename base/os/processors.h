/// The processors that threads run on.
#pragma once

#include <memory>

#include "base/lbexport.h"
#include "base/os/childprocess.h"

namespace LbOs
{

/// Temporarily restricts the processors that a thread may use. Two processes that alternate in short turns need a fifth
/// of the time on one processor, because the system need not wake another processor for each turn. Has no effect on
/// Windows, where this would gain nothing, or on failure.
class LB_API CThreadProcessors
{
public:
    CThreadProcessors();
    ~CThreadProcessors();

    CThreadProcessors(const CThreadProcessors&) = delete;
    CThreadProcessors& operator=(const CThreadProcessors&) = delete;

    /// Stores the processors that the calling thread may use now.
    void Read();

    /// Binds the calling thread and the main thread of `child`, which should be asleep, to the caller's current
    /// processor. Each of the two threads calls Restore for itself.
    void ShareProcessorWith(const CChildProcess& child);

    /// Restores the stored processors of the calling thread. No effect without a Read since the last Restore.
    void Restore();

private:
    struct SState;
    std::unique_ptr<SState> m_state;
};

} // namespace LbOs

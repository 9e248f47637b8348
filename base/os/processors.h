/// The processors that threads run on.
#pragma once

#include <memory>

#include "base/lbexport.h"
#include "base/os/childprocess.h"

namespace LbOs
{

/// The processors that one thread may use, which can be narrowed temporarily. Two processes that alternate in short
/// turns need a fifth of the time on one processor, because the system need not wake another processor for each turn.
/// No effect on Windows, where this gains nothing, and on failure.
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

    /// Restores the stored processors of the calling thread, once; no effect if nothing has been stored since.
    void Restore();

private:
    struct SState;
    std::unique_ptr<SState> m_state;
};

} // namespace LbOs

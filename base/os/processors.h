/// Which processors threads run on.
#pragma once

#include <memory>

#include "base/lbexport.h"
#include "base/os/childprocess.h"

namespace LbOs
{

/// The processors that one thread may use: a choice that can be narrowed for a while. Two processes that take short
/// turns are at it in a fifth of the time on one processor, since the system need not wake another one for each of
/// them. Where the system leaves nothing to gain by that, as on Windows, and on any failure, nothing changes.
class LB_API CThreadProcessors
{
public:
    CThreadProcessors();
    ~CThreadProcessors();

    CThreadProcessors(const CThreadProcessors&) = delete;
    CThreadProcessors& operator=(const CThreadProcessors&) = delete;

    /// Keeps in mind what the calling thread may use now.
    void Read();

    /// Keeps the calling thread on its present processor, and brings the main thread of `child` there, too, which best
    /// is asleep. Each of the two frees itself by Restore.
    void MeetWith(const CChildProcess& child);

    /// Lets the calling thread use what was read, once; without effect when nothing has been read since.
    void Restore();

private:
    struct SState;
    std::unique_ptr<SState> m_state;
};

} // namespace LbOs

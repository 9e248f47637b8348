/// Cancellation of threads on the Linux side. Internal to base/os.
#pragma once

#include <pthread.h>

namespace LbOs::Linux
{

/// While it lives, calls that would end a thread whose cancellation is pending do not. For work below noexcept, where
/// the end of the thread would be that of the process.
class CCancellationOff
{
public:
    CCancellationOff() noexcept { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_previous); }
    ~CCancellationOff() { pthread_setcancelstate(m_previous, &m_previous); }
    CCancellationOff(const CCancellationOff&) = delete;
    CCancellationOff& operator=(const CCancellationOff&) = delete;

private:
    int m_previous = PTHREAD_CANCEL_ENABLE;
};

} // namespace LbOs::Linux

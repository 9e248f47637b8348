/// Cancellation of threads on the Linux side. Internal to base/os.
#pragma once

#include <pthread.h>

namespace LbOs::Linux
{

/// During its lifetime, pending cancellation does not end the thread. For code called from noexcept functions, where
/// ending the thread would end the process.
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

#include "base/os/forkmark.h"

std::uint64_t LbOs::GetForkMark() noexcept
{
    // The system makes no copies of processes.
    return 1;
}

#include "tests/support/os/filelimits.h"

std::shared_ptr<void> LbOs::LimitFileSize(std::size_t /*size*/)
{
    return nullptr;
}

bool LbOs::ForbidLocks()
{
    return false;
}

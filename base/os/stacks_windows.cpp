#include "base/os/stacks.h"

std::vector<LbOs::SThreadStack> LbOs::ReadStacks(const CChildProcess& /*child*/,
                                                 const std::optional<SCrashedThread>& /*crashed*/)
{
    return {};
}

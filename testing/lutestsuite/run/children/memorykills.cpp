#include "testing/lutestsuite/run/children/memorykills.h"

bool LuTestSuiteRun::CMemoryKills::Take()
{
    const std::uint64_t kills = m_count();
    std::uint64_t taken = m_taken;
    while (taken < kills)
    {
        if (m_taken.compare_exchange_weak(taken, taken + 1))
        {
            return true;
        }
    }
    return false;
}

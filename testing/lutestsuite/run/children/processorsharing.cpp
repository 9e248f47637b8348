#include "testing/lutestsuite/run/children/processorsharing.h"

namespace LuTestSuiteRun
{

void CProcessorSharing::Record(std::uint64_t nanoseconds)
{
    const bool isLong = nanoseconds >= sc_uiLong;
    if (IsNext())
    {
        m_left = isLong ? 0 : m_left - 1;
    }
    else
    {
        m_slow = nanoseconds > sc_uiQuick && !isLong ? m_slow + 1 : 0;
        if (m_slow == sc_uiSlow)
        {
            m_left = sc_uiInARow;
            m_slow = 0;
        }
    }
}

} // namespace LuTestSuiteRun

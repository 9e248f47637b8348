#include "testing/lutestsuite/run/children/processorsharing.h"

#include <gtest/gtest.h>

namespace
{

using LuTestSuiteRun::CProcessorSharing;

constexpr std::uint64_t c_Slow = 60'000;

void RecordSlow(CProcessorSharing& sharing, std::uint32_t answers = CProcessorSharing::sc_uiSlow)
{
    for (std::uint32_t answer = 0; answer < answers; ++answer)
    {
        EXPECT_FALSE(sharing.IsNext());
        sharing.Record(c_Slow);
    }
}

TEST(ProcessorSharing, IsUsedForShortCasesWithSlowAnswers)
{
    CProcessorSharing sharing;

    RecordSlow(sharing);

    EXPECT_TRUE(sharing.IsNext());
}

TEST(ProcessorSharing, NeedsSeveralSlowAnswersInARow)
{
    for (const std::uint64_t other : {CProcessorSharing::sc_uiQuick, CProcessorSharing::sc_uiLong})
    {
        CProcessorSharing sharing;
        RecordSlow(sharing, CProcessorSharing::sc_uiSlow - 1);
        sharing.Record(other);
        RecordSlow(sharing, CProcessorSharing::sc_uiSlow - 1);
        EXPECT_FALSE(sharing.IsNext()) << other;
    }
}

TEST(ProcessorSharing, EndsWithALongCase)
{
    CProcessorSharing sharing;
    RecordSlow(sharing);

    sharing.Record(CProcessorSharing::sc_uiLong);

    EXPECT_FALSE(sharing.IsNext());
}

TEST(ProcessorSharing, EndsWithTheChild)
{
    CProcessorSharing sharing;
    RecordSlow(sharing);

    sharing.Forget();

    EXPECT_FALSE(sharing.IsNext());
}

TEST(ProcessorSharing, IsSuspendedFromTimeToTime)
{
    CProcessorSharing sharing;
    RecordSlow(sharing);
    for (std::uint32_t request = 0; request < CProcessorSharing::sc_uiInARow; ++request)
    {
        EXPECT_TRUE(sharing.IsNext());
        sharing.Record(0);
    }
    EXPECT_FALSE(sharing.IsNext());
}

} // namespace

#include "base/os/interruption.h"

#include <gtest/gtest.h>

namespace
{

TEST(Interruption, HasTheExitStatusThatShellsReport)
{
    EXPECT_EQ(LbOs::GetExitStatus(LbOs::EInterruption::None), 0);
    EXPECT_EQ(LbOs::GetExitStatus(LbOs::EInterruption::User), 130);
    EXPECT_EQ(LbOs::GetExitStatus(LbOs::EInterruption::Terminate), 143);
}

TEST(Interruption, IsNotRequestedAtFirst)
{
    EXPECT_EQ(LbOs::GetInterruption(), LbOs::EInterruption::None);
}

} // namespace

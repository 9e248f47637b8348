#include "base/os/machine.h"

#include <gtest/gtest.h>

namespace
{

TEST(Machine, HasAProcessor)
{
    const LbOs::SProcessor processor = LbOs::QueryProcessor();
    EXPECT_GE(processor.logicalProcessors, 1U);
    EXPECT_FALSE(processor.model.starts_with(L' ')) << testing::PrintToString(processor.model);
    EXPECT_GE(processor.megahertz, 0.0);
    EXPECT_LT(processor.megahertz, 100'000.0);
}

TEST(Machine, HasMemory)
{
    constexpr std::uint64_t c_Megabyte = 1 << 20U;
    EXPECT_GT(LbOs::GetPhysicalMemory(), 64 * c_Megabyte);
}

TEST(Machine, HasAName)
{
    EXPECT_NE(LbOs::GetMachineName(), L"");
    EXPECT_EQ(LbOs::GetMachineName().find(L'\0'), std::wstring::npos);
}

TEST(Machine, AnswersTheSameAgain)
{
    EXPECT_EQ(LbOs::QueryProcessor().model, LbOs::QueryProcessor().model);
    EXPECT_EQ(LbOs::GetPhysicalMemory(), LbOs::GetPhysicalMemory());
    EXPECT_EQ(LbOs::GetGraphicsAdapter(), LbOs::GetGraphicsAdapter());
}

} // namespace

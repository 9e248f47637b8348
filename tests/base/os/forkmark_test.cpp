#include "base/os/forkmark.h"

#include <optional>

#include <gtest/gtest.h>

#include "tests/support/os/testaids.h"

namespace
{

TEST(ForkMark, StaysTheSameInAProcess)
{
    const std::uint64_t mark = LbOs::GetForkMark();

    EXPECT_NE(mark, 0U);
    EXPECT_EQ(LbOs::GetForkMark(), mark);
}

TEST(ForkMark, DiffersInAForkAndInAForkOfTheFork)
{
    const std::uint64_t mark = LbOs::GetForkMark();
    const std::optional<int> status = LbOs::RunInFork([mark] {
        const std::uint64_t copyMark = LbOs::GetForkMark();
        const bool isAnother = copyMark != mark && LbOs::GetForkMark() == copyMark;
        const auto checkCopy = [=] { return LbOs::GetForkMark() != mark && LbOs::GetForkMark() != copyMark ? 0 : 1; };
        return isAnother ? LbOs::RunInFork(checkCopy).value_or(1) : 1;
    });
    if (!status)
    {
        GTEST_SKIP() << "processes do not fork";
    }
    EXPECT_EQ(status, 0);
    EXPECT_EQ(LbOs::GetForkMark(), mark);
}

} // namespace

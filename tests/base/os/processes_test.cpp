#include "base/os/processes.h"

#include <cstddef>

#include <gtest/gtest.h>

#include "tests/support/apart.h"
#include "tests/support/os/testaids.h"

namespace
{

constexpr unsigned c_Many = 1000;
constexpr std::size_t c_RoomForSomeStacks = std::size_t{100} << 20U;

TEST(OsProcessesThreads, CanAllBeStartedWithoutALimit)
{
    EXPECT_EQ(LbOs::CountStartableThreads(3), 3U);
    EXPECT_EQ(LbOs::CountStartableThreads(0), 0U);
}

TEST(OsProcessesThreads, AreCountedUpToTheLimit)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers end the process when there is no memory";
#endif
    const bool isChecked = CheckApart([] { return LbOs::LimitMemory(c_RoomForSomeStacks); },
                                      [] {
                                          const unsigned count = LbOs::CountStartableThreads(c_Many);
                                          EXPECT_GT(count, 0U);
                                          EXPECT_LT(count, c_Many);
                                          // The counted threads have ended, so new threads can start within the limit.
                                          EXPECT_GT(LbOs::CountStartableThreads(c_Many), 0U);
                                      });
    if (!isChecked)
    {
        GTEST_SKIP() << "threads cannot be limited";
    }
}

} // namespace

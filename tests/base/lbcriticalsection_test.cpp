#include "base/lbcriticalsection.h"

#include <thread>
#include <type_traits>

#include <gtest/gtest.h>

namespace
{

/// True if another thread can enter.
bool isFree(LbCriticalSection& section)
{
    bool isEntered = false;
    std::thread([&] {
        isEntered = section.try_lock();
        if (isEntered)
        {
            section.unlock();
        }
    }).join();
    return isEntered;
}

TEST(LbCriticalSection, IsFreeAtFirst)
{
    LbCriticalSection section;

    EXPECT_TRUE(isFree(section));
}

TEST(LbCriticalSection, ExcludesOtherThreads)
{
    LbCriticalSection section;
    const LbCriticalSectionLock lock(section);

    EXPECT_FALSE(isFree(section));
}

TEST(LbCriticalSection, CanBeEnteredAgainByItsOwner)
{
    LbCriticalSection section;
    const LbCriticalSectionLock outer(section);
    const LbCriticalSectionLock inner(section);

    EXPECT_TRUE(section.try_lock());
    section.unlock();
}

TEST(LbCriticalSection, MustBeLeftAsOftenAsEntered)
{
    LbCriticalSection section;
    section.lock();
    section.lock();

    section.unlock();
    EXPECT_FALSE(isFree(section));
    section.unlock();
    EXPECT_TRUE(isFree(section));
}

TEST(LbCriticalSection, SerialisesConcurrentThreads)
{
    constexpr int c_Steps = 10'000;
    LbCriticalSection section;
    int count = 0;
    const auto step = [&] {
        for (int index = 0; index < c_Steps; ++index)
        {
            const LbCriticalSectionLock lock(section);
            ++count;
        }
    };
    std::thread other(step);
    step();
    other.join();

    EXPECT_EQ(count, 2 * c_Steps);
}

TEST(LbCriticalSection, CannotBeCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<LbCriticalSection>);
    EXPECT_FALSE(std::is_copy_assignable_v<LbCriticalSection>);
}

} // namespace

#include "base/lbparallel.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbcriticalsection.h"
#include "base/lbthreadpool.h"
#include "tests/support/latch.h"

namespace
{

std::int64_t add(std::int64_t left, std::int64_t right)
{
    return left + right;
}

} // namespace

TEST(LbParallel, CallsTheBodyOncePerIndex)
{
    std::vector<int> calls(100'000);
    LbParallel::For(0, 100'000, [&calls](std::int64_t index) { ++calls[static_cast<std::size_t>(index)]; });
    EXPECT_EQ(std::ranges::count(calls, 1), 100'000);
}

TEST(LbParallel, IncludesTheFirstIndexAndExcludesTheLast)
{
    LbCombinable<std::vector<std::int64_t>> indices;
    LbParallel::For(-3, 4, [&indices](std::int64_t index) { indices.Local().push_back(index); });
    std::vector<std::int64_t> all = indices.Combine([](std::vector<std::int64_t> left, const auto& right) {
        left.insert(left.end(), right.begin(), right.end());
        return left;
    });
    std::ranges::sort(all);
    EXPECT_EQ(all, (std::vector<std::int64_t>{-3, -2, -1, 0, 1, 2, 3}));
}

TEST(LbParallel, DoesNotCallTheBodyForAnEmptyOrReversedRange)
{
    std::atomic<int> calls = 0;
    LbParallel::For(5, 5, [&calls](std::int64_t) { ++calls; });
    LbParallel::For(5, -5, [&calls](std::int64_t) { ++calls; });
    EXPECT_EQ(calls, 0);
}

TEST(LbParallel, CoversTheWidestRangeWithoutOverlap)
{
    constexpr std::int64_t min = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t max = std::numeric_limits<std::int64_t>::max();
    LbCriticalSection criticalSection;
    std::vector<std::pair<std::int64_t, std::int64_t>> ranges;
    LbParallel::ForRanges(min, max, [&criticalSection, &ranges](std::int64_t first, std::int64_t last) {
        const LbCriticalSectionLock lock(criticalSection);
        ranges.emplace_back(first, last);
    });
    std::ranges::sort(ranges);
    std::int64_t end = min;
    for (const auto& [first, last] : ranges)
    {
        EXPECT_EQ(first, end);
        EXPECT_LT(first, last);
        end = last;
    }
    EXPECT_EQ(end, max);
}

TEST(LbParallel, RunsOnSeveralThreads)
{
    if (LbThreadPool::GetInstance().GetThreadCount() < 2)
    {
        GTEST_SKIP() << "there is only one hardware thread";
    }
    Latch both(2);
    std::thread::id threads[2];
    LbParallel::For(0, 2, [&both, &threads](std::int64_t index) {
        threads[index] = std::this_thread::get_id();
        both.ArriveAndWait();
    });
    EXPECT_NE(threads[0], threads[1]);
}

TEST(LbParallel, PassesOnTheExceptionOfABody)
{
    const auto body = [](std::int64_t index) {
        if (index == 777)
        {
            throw std::out_of_range("777");
        }
    };
    EXPECT_THROW(LbParallel::For(0, 1000, body), std::out_of_range);
}

TEST(LbParallel, EndsEarlyAfterAnException)
{
    std::atomic<int> calls = 0;
    const auto body = [&calls](std::int64_t) {
        ++calls;
        throw std::runtime_error("body");
    };
    EXPECT_THROW(LbParallel::For(0, 1'000'000, body), std::runtime_error);
    EXPECT_LE(calls, static_cast<int>(LbThreadPool::GetInstance().GetThreadCount()));
}

TEST(LbParallel, RunsAgainAfterAnException)
{
    EXPECT_THROW(LbParallel::For(0, 100, [](std::int64_t) { throw 1; }), int);
    LbCombinable<std::int64_t> sums;
    LbParallel::For(0, 100, [&sums](std::int64_t index) { sums.Local() += index; });
    EXPECT_EQ(sums.Combine(add), 4950);
}

TEST(LbParallel, RunsNestedLoops)
{
    LbCombinable<std::int64_t> calls;
    LbParallel::For(0, 20, [&calls](std::int64_t) {
        LbParallel::For(
            0, 20, [&calls](std::int64_t) { LbParallel::For(0, 20, [&calls](std::int64_t) { ++calls.Local(); }); });
    });
    EXPECT_EQ(calls.Combine(add), 20 * 20 * 20);
}

TEST(LbParallel, RunsLoopsOnAllPoolThreadsAtOnce)
{
    LbThreadPool& pool = LbThreadPool::GetInstance();
    const unsigned count = pool.GetThreadCount();
    Latch started(count);
    LbCombinable<std::int64_t> calls;
    std::vector<LbThreadPool::CTask> tasks;
    for (unsigned i = 0; i < count; ++i)
    {
        tasks.push_back(pool.Run([&started, &calls] {
            started.ArriveAndWait();
            LbParallel::For(0, 1000, [&calls](std::int64_t) { ++calls.Local(); });
        }));
    }
    for (const LbThreadPool::CTask& task : tasks)
    {
        task.Wait();
    }
    EXPECT_EQ(calls.Combine(add), 1000 * static_cast<std::int64_t>(count));
}

TEST(LbParallel, CallerDoesAllTheWorkWhileThePoolIsBusy)
{
    LbThreadPool& pool = LbThreadPool::GetInstance();
    const unsigned count = pool.GetThreadCount();
    Latch started(count);
    Latch end(1);
    std::vector<LbThreadPool::CTask> tasks;
    for (unsigned i = 0; i < count; ++i)
    {
        tasks.push_back(pool.Run([&started, &end] {
            started.CountDown();
            end.Wait();
        }));
    }
    started.Wait();
    std::int64_t calls = 0;
    LbParallel::For(0, 1000, [&calls](std::int64_t) { ++calls; });
    EXPECT_EQ(calls, 1000);
    end.CountDown();
    for (const LbThreadPool::CTask& task : tasks)
    {
        task.Wait();
    }
}

TEST(LbParallel, LoopsOfManyThreadsDoNotDisturbEachOther)
{
    std::atomic<int> rightCount = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i)
        {
            threads.emplace_back([&rightCount] {
                for (int k = 0; k < 25; ++k)
                {
                    LbCombinable<std::int64_t> sums;
                    LbParallel::For(0, 1000, [&sums](std::int64_t index) { sums.Local() += index; });
                    rightCount += sums.Combine(add) == 499'500 ? 1 : 0;
                }
            });
        }
    }
    EXPECT_EQ(rightCount, 100);
}

TEST(LbParallel, LetsBodiesEnterACriticalSection)
{
    LbCriticalSection criticalSection;
    std::int64_t count = 0;
    LbParallel::For(0, 10'000, [&criticalSection, &count](std::int64_t) {
        const LbCriticalSectionLock lock(criticalSection);
        ++count;
    });
    EXPECT_EQ(count, 10'000);
}

TEST(LbParallel, InvokeCallsEachFunctionOnce)
{
    std::atomic<int> calls[3] = {};
    LbParallel::Invoke({[&calls] { ++calls[0]; }, [&calls] { ++calls[1]; }, [&calls] { ++calls[2]; }});
    EXPECT_EQ(calls[0], 1);
    EXPECT_EQ(calls[1], 1);
    EXPECT_EQ(calls[2], 1);
}

TEST(LbParallel, InvokeWithoutFunctionsReturns)
{
    LbParallel::Invoke({});
    SUCCEED();
}

TEST(LbParallel, InvokePassesOnAnException)
{
    EXPECT_THROW(LbParallel::Invoke({[] {}, [] { throw std::runtime_error("function"); }}), std::runtime_error);
}

TEST(LbParallel, SumsARangeIncludingBothEnds)
{
    EXPECT_EQ(LbParallel::SumRange(0, 99), 4950);
    EXPECT_EQ(LbParallel::SumRange(7, 7), 7);
    EXPECT_EQ(LbParallel::SumRange(-10, 9), -10);
    EXPECT_EQ(LbParallel::SumRange(1, 1'000'000), 500'000'500'000);
}

TEST(LbParallel, SumOfAnEmptyRangeIsZero)
{
    EXPECT_EQ(LbParallel::SumRange(1, 0), 0);
}

TEST(LbCombinable, ReturnsTheInitialValueIfUnused)
{
    const LbCombinable<std::int64_t> values(42);
    EXPECT_EQ(values.Combine(add), 42);
}

TEST(LbCombinable, StartsEachThreadsValueAtTheInitialValue)
{
    LbCombinable<std::wstring> values(L"a");
    values.Local() += L"b";
    EXPECT_EQ(values.Combine([](const auto& left, const auto& right) { return left + right; }), L"ab");
}

TEST(LbCombinable, KeepsAThreadsValueBetweenCalls)
{
    LbCombinable<int> values;
    int& value = values.Local();
    value = 5;
    EXPECT_EQ(&values.Local(), &value);
    EXPECT_EQ(values.Local(), 5);
}

TEST(LbCombinable, SeparatesTheValuesOfSeveralCombinables)
{
    LbCombinable<int> first;
    LbCombinable<int> second;
    first.Local() = 1;
    second.Local() = 2;
    EXPECT_EQ(first.Local(), 1);
    EXPECT_EQ(second.Local(), 2);
}

TEST(LbCombinable, StartsWithTheInitialValueAtAReusedAddress)
{
    for (int i = 0; i < 3; ++i)
    {
        LbCombinable<int> values;
        EXPECT_EQ(values.Local(), 0);
        values.Local() = 9;
    }
}

TEST(LbCombinable, SeparatesTheValuesOfManyThreads)
{
    constexpr int threadCount = 150;
    LbCombinable<std::int64_t> values;
    Latch started(threadCount);
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < threadCount; ++i)
        {
            threads.emplace_back([i, &started, &values] {
                // Keeps all threads alive at the same time, because a new thread could reuse the value of an ended one.
                started.ArriveAndWait();
                values.Local() += i;
                values.Local() += 1000;
            });
        }
    }
    EXPECT_EQ(values.Combine(add), 1000 * threadCount + threadCount * (threadCount - 1) / 2);
}

TEST(LbCombinable, CombinesEachThreadsValueOnce)
{
    LbCombinable<int> values;
    values.Local() = 1;
    Latch done(2);
    {
        std::jthread first([&values, &done] {
            values.Local() = 10;
            done.ArriveAndWait();
        });
        std::jthread second([&values, &done] {
            values.Local() = 100;
            done.ArriveAndWait();
        });
    }
    EXPECT_EQ(values.Combine([](int left, int right) { return left + right; }), 111);
}

// Tests of the queue of operations that trackers receive later.

#include "testing/lutestsuite/heap/operationlog.h"

#include <vector>

#include <gtest/gtest.h>

namespace
{

using LuTestSuite::COperationLog;
using LuTestSuite::SOperation;

/// More operations than the pages of one allocation hold.
constexpr std::size_t c_Many = 5000;

std::vector<SOperation> s_Replayed;

class OperationLog : public testing::Test
{
protected:
    OperationLog()
    {
        s_Replayed.clear();
        s_Replayed.reserve(c_Many);
    }

    ~OperationLog() override
    {
        m_log.Replay([](const SOperation&) noexcept {});
    }

    void Append(std::size_t count)
    {
        for (std::size_t index = 0; index < count; ++index)
        {
            m_log.Append({static_cast<int>(index % 3), index, index + 1, index + 2});
        }
    }

    void Replay()
    {
        m_log.Replay([](const SOperation& operation) noexcept { s_Replayed.push_back(operation); });
    }

    COperationLog m_log;
};

} // namespace

TEST_F(OperationLog, ReplaysAllOperationsInOrder)
{
    Append(c_Many);

    Replay();

    ASSERT_EQ(s_Replayed.size(), c_Many);
    for (std::size_t index = 0; index < c_Many; ++index)
    {
        const SOperation& operation = s_Replayed[index];
        ASSERT_EQ(operation.kind, static_cast<int>(index % 3));
        ASSERT_EQ(operation.oldAddress, index);
        ASSERT_EQ(operation.newAddress, index + 1);
        ASSERT_EQ(operation.size, index + 2);
    }
}

TEST_F(OperationLog, ReplaysEachOperationOnce)
{
    Append(2);
    Replay();
    Replay();

    EXPECT_EQ(s_Replayed.size(), 2U);
}

TEST_F(OperationLog, AcceptsOperationsAfterAReplay)
{
    Append(1);
    Replay();
    Append(3);
    Replay();

    EXPECT_EQ(s_Replayed.size(), 4U);
}

TEST_F(OperationLog, DropsAbandonedOperations)
{
    Append(2);
    m_log.Abandon();
    Append(1);
    Replay();

    EXPECT_EQ(s_Replayed.size(), 1U);
}

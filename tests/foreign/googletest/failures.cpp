// Failures and skips outside of a test's own thread and body.

#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <thread>

#include <gtest/gtest.h>

namespace
{

TEST(Threads, Fail)
{
    std::thread([] { ADD_FAILURE() << "in a thread"; }).join();
}

class FailedSuite : public testing::Test
{
protected:
    static void SetUpTestSuite() { FAIL() << "no database"; }
};

TEST_F(FailedSuite, IsNotRun)
{
    ADD_FAILURE() << "was run";
}

class ThrowingSuite : public testing::Test
{
protected:
    static void SetUpTestSuite() { throw std::runtime_error("broken suite"); }
};

TEST_F(ThrowingSuite, IsNotRun)
{
    ADD_FAILURE() << "was run";
}

class SkippedSuite : public testing::Test
{
protected:
    static void SetUpTestSuite() { GTEST_SKIP() << "no licence"; }
};

// GoogleTest 1.12 runs this test although the set-up of the suite has skipped it.
TEST_F(SkippedSuite, Passes) {}

class LeavingSuite : public testing::Test
{
protected:
    static void TearDownTestSuite() { FAIL() << "left files behind"; }
};

TEST_F(LeavingSuite, Passes) {}

/// The environment variable determines what the set-up does.
class CSetUpOnDemand : public testing::Environment
{
    void SetUp() override
    {
        const char* const variable = std::getenv("LUTESTSUITE_TEST_SET_UP");
        const std::string_view wanted = variable == nullptr ? "" : variable;
        if (wanted == "fail")
        {
            FAIL() << "no server";
        }
        if (wanted == "skip")
        {
            GTEST_SKIP() << "no display";
        }
    }
};

const testing::Environment* const s_setUpOnDemand = testing::AddGlobalTestEnvironment(new CSetUpOnDemand);

} // namespace

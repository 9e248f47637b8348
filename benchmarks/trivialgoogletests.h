/// Empty tests of GoogleTest, in suites of 50.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "benchmarks/trivialtests.h"

namespace Benchmarks
{

class TrivialTest : public testing::Test
{
    void TestBody() override { EXPECT_TRUE(true); }
};

inline bool RegisterGoogleTests()
{
    for (int test = 0; test < GetTestCount(); ++test)
    {
        testing::RegisterTest(("Trivial" + std::to_string(test / c_TestsPerSuite)).c_str(),
                              ("DoesNothing" + std::to_string(test % c_TestsPerSuite)).c_str(), nullptr, nullptr,
                              __FILE__, __LINE__, []() -> testing::Test* { return new TrivialTest; });
    }
    return true;
}

} // namespace Benchmarks

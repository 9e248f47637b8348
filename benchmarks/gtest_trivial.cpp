/// 5,000 empty tests in 100 suites, run by GoogleTest.
#include <gtest/gtest.h>

namespace
{

constexpr int c_SuiteCount = 100;
constexpr int c_TestsPerSuite = 50;

class TrivialTest : public testing::Test
{
    void TestBody() override { EXPECT_TRUE(true); }
};

} // namespace

int main(int argumentCount, char** arguments)
{
    testing::InitGoogleTest(&argumentCount, arguments);
    for (int suite = 0; suite < c_SuiteCount; ++suite)
    {
        for (int test = 0; test < c_TestsPerSuite; ++test)
        {
            testing::RegisterTest(("Trivial" + std::to_string(suite)).c_str(),
                                  ("DoesNothing" + std::to_string(test)).c_str(), nullptr, nullptr, __FILE__, __LINE__,
                                  []() -> testing::Test* { return new TrivialTest; });
        }
    }
    return RUN_ALL_TESTS();
}

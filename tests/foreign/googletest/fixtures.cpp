// Fixtures, parameters, types, shared and global set-ups.

#include <string>

#include <gtest/gtest.h>

namespace
{

int s_environments = 0;

class CEnvironment : public testing::Environment
{
    void SetUp() override { ++s_environments; }
    void TearDown() override { --s_environments; }
};

const testing::Environment* const s_environment = testing::AddGlobalTestEnvironment(new CEnvironment);

class Buffer : public testing::Test
{
protected:
    static void SetUpTestSuite() { s_suites += 1; }
    static void TearDownTestSuite() { s_suites -= 1; }
    void SetUp() override { m_text = "ready"; }

    static int s_suites;
    std::string m_text;
};

int Buffer::s_suites = 0;

TEST_F(Buffer, IsSetUp)
{
    EXPECT_EQ(m_text, "ready");
    EXPECT_EQ(s_suites, 1);
    EXPECT_EQ(s_environments, 1);
}

TEST_F(Buffer, IsSetUpAgain)
{
    EXPECT_EQ(s_suites, 1);
    EXPECT_EQ(s_environments, 1);
}

class Numbers : public testing::TestWithParam<int>
{
};

TEST_P(Numbers, AreEven)
{
    EXPECT_EQ(GetParam() % 2, 0);
}

INSTANTIATE_TEST_SUITE_P(Small, Numbers, testing::Values(2, 3));
INSTANTIATE_TEST_SUITE_P(Named, Numbers, testing::Values(4),
                         [](const testing::TestParamInfo<int>&) { return std::string("Four"); });

template<typename T>
class Typed : public testing::Test
{
};

struct SStrangeNames
{
    template<typename T>
    static std::string GetName(int index)
    {
        return index == 0 ? "a:b*" : "a?b*";
    }
};

using Types = testing::Types<char, int>;
TYPED_TEST_SUITE(Typed, Types, SStrangeNames);

TYPED_TEST(Typed, AreSmall)
{
    EXPECT_EQ(sizeof(TypeParam), 1U);
}

class Refused : public testing::Test
{
protected:
    void SetUp() override { GTEST_SKIP() << "no server"; }
};

TEST_F(Refused, NeedsAServer)
{
    ADD_FAILURE() << "was run";
}

/// The number of tests that are running, which must be 1.
int s_running = 0;

class Shared : public testing::TestWithParam<int>
{
};

TEST_P(Shared, RunsAlone)
{
    ++s_running;
    for (int round = 0; round < 1000; ++round)
    {
        EXPECT_EQ(s_running, 1);
    }
    --s_running;
}

INSTANTIATE_TEST_SUITE_P(Many, Shared, testing::Range(0, 40));

} // namespace

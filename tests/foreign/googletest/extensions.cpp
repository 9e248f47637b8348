// Mocks, listeners, patterns of types, disabled parameters.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

class CMock
{
public:
    MOCK_METHOD(int, Read, ());
};

TEST(Mocks, AreCalled)
{
    CMock mock;
    EXPECT_CALL(mock, Read()).WillOnce(testing::Return(3));
    EXPECT_THAT(mock.Read(), testing::Gt(2));
}

TEST(Mocks, AreNotCalled)
{
    CMock mock;
    EXPECT_CALL(mock, Read());
}

int s_started = 0;

class CCounter : public testing::EmptyTestEventListener
{
    void OnTestStart(const testing::TestInfo& /*test*/) override { ++s_started; }
};

const bool s_isCounting = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new CCounter);
    return true;
}();

TEST(Listeners, AreCalled)
{
    EXPECT_TRUE(s_isCounting);
    EXPECT_GE(s_started, 1);
}

template<typename T>
class Pattern : public testing::Test
{
};

TYPED_TEST_SUITE_P(Pattern);

TYPED_TEST_P(Pattern, IsSigned)
{
    EXPECT_LT(static_cast<TypeParam>(-1), TypeParam());
}

REGISTER_TYPED_TEST_SUITE_P(Pattern, IsSigned);

using Signs = testing::Types<int, unsigned>;
INSTANTIATE_TYPED_TEST_SUITE_P(My, Pattern, Signs);

class Later : public testing::TestWithParam<int>
{
};

TEST_P(Later, Runs)
{
    ADD_FAILURE() << "was run";
}

INSTANTIATE_TEST_SUITE_P(DISABLED_Now, Later, testing::Values(1));

/// GoogleTest adds a failing test for this suite, because it has no instances.
class Forgotten : public testing::TestWithParam<int>
{
};

TEST_P(Forgotten, IsNotInstantiated) {}

class DISABLED_Words : public testing::TestWithParam<int>
{
};

TEST_P(DISABLED_Words, AreFound)
{
    ADD_FAILURE() << "was run";
}

INSTANTIATE_TEST_SUITE_P(All, DISABLED_Words, testing::Values(1));

} // namespace

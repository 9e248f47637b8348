#include "testing/lutestsuite/environment/utilsfailure.h"

#include <gtest/gtest.h>

namespace
{

TEST(ThrowUtilsFailure, NamesTheClassAndTheCallersLine)
{
    constexpr std::uint32_t c_Line = __LINE__ + 3;
    try
    {
        LuTestSuite::ThrowUtilsFailure(L"LuTestSuiteUtils::Operation");
    }
    catch (const LbException& exception)
    {
        EXPECT_EQ(exception.GetSourceFile(), L"lutestsuiteutils");
        EXPECT_EQ(exception.GetFunction(), L"LuTestSuiteUtils::Operation");
        EXPECT_EQ(exception.GetLine(), c_Line);
        EXPECT_EQ(exception.GetMessageText(), L"");
    }
}

} // namespace

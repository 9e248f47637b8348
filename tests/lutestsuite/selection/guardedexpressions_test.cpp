#include "testing/lutestsuite/selection/guardedexpressions.h"

#include <cstddef>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/lutestsuite/selection/randomexpressions.h"
#include "tests/lutestsuite/selection/randomnames.h"

namespace
{

using namespace RandomNames;
using LuTestSuite::CGuardedExpressions;
using LuTestSuite::SExpressionSyntax;

bool CanTake(const std::wstring& source)
{
    const std::optional<SExpressionSyntax> syntax = LuTestSuite::ParseExpression(source);
    return syntax && CGuardedExpressions::CanTake(*syntax);
}

bool IsFound(const Texts& sources, const std::wstring& name)
{
    CGuardedExpressions expressions;
    for (const std::wstring& source : sources)
    {
        expressions.Add(LuTestSuite::ParseExpression(source).value().root);
    }
    return expressions.IsFoundIn(name);
}

TEST(GuardedExpressions, BeginWithANegativeLookAhead)
{
    EXPECT_TRUE(CanTake(L"^(?!.*slow)"));
    EXPECT_TRUE(CanTake(L"^(?!.*slow|.*(?:old|bad)$).*\\.txt$"));
    EXPECT_FALSE(CanTake(L"(?!.*slow)"));
    EXPECT_FALSE(CanTake(L"^(?=.*slow)"));
    EXPECT_FALSE(CanTake(L"^(?!.*slow)|x"));
    EXPECT_FALSE(CanTake(L"^a(?!.*slow)"));
    EXPECT_FALSE(CanTake(L"^(?!(?!a))"));
    EXPECT_FALSE(CanTake(L"^(?!a)(?!b)"));
    EXPECT_FALSE(CanTake(L"^(?!(a)\\1)"));
    EXPECT_FALSE(CanTake(L"^(?!a\\b)"));
    EXPECT_FALSE(CanTake(L"^(?!a)+"));
    EXPECT_FALSE(CanTake(L"^(?!?:a)"));
    EXPECT_FALSE(CanTake(L"^slow"));
    EXPECT_FALSE(CanTake(L"^(?!" + std::wstring(20'000, L'a') + L")"));
}

TEST(GuardedExpressions, AreFoundOnlyIfTheirGuardIsNot)
{
    EXPECT_TRUE(IsFound({L"^(?!.*slow)"}, L"fast"));
    EXPECT_TRUE(IsFound({L"^(?!.*slow)"}, L""));
    EXPECT_FALSE(IsFound({L"^(?!.*slow)"}, L"very slow"));
    EXPECT_FALSE(IsFound({L"^(?!.*slow).*x$"}, L"fast"));
    EXPECT_TRUE(IsFound({L"^(?!.*slow).*x$", L"^(?!.*fast)"}, L"slow x"));
    EXPECT_FALSE(IsFound({L"^(?!.*slow).*x$", L"^(?!.*fast)"}, L"fast slow x"));
    EXPECT_FALSE(IsFound({}, L"fast"));
}

TEST(GuardedExpressions, AgreeWithTheStandardLibrary)
{
    CRandom random(7);
    CRandomExpression expressions(random);
    std::size_t takenCount = 0;
    std::size_t foundCount = 0;
    std::size_t nameCount = 0;
    for (int count = 0; count < 6'000; ++count)
    {
        const std::wstring source = L"^(?!" + expressions.Make(2) + L")" + expressions.Make(1);
        if (!CanTake(source))
        {
            continue;
        }
        ++takenCount;
        const std::wregex plain(source, std::regex_constants::ECMAScript);
        for (const std::wstring& name : MakeNames(random, 20))
        {
            const bool isFound = IsFound({source}, name);
            ASSERT_EQ(isFound, std::regex_search(name, plain))
                << testing::PrintToString(source) << " " << testing::PrintToString(name);
            foundCount += isFound ? 1U : 0U;
            ++nameCount;
        }
    }
    // With fewer matches or misses, the test would check too little.
    EXPECT_GT(takenCount, 1'000U);
    EXPECT_GT(foundCount, nameCount / 20);
    EXPECT_LT(foundCount, nameCount * 19 / 20);
}

} // namespace

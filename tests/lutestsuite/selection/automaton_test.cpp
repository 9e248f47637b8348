#include "testing/lutestsuite/selection/automaton.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/lutestsuite/selection/randomexpressions.h"
#include "tests/lutestsuite/selection/randomnames.h"

namespace
{

using namespace RandomNames;
using LuTestSuite::CAutomaton;
using LuTestSuite::SExpressionSyntax;
using Numbers = std::vector<std::uint32_t>;

/// Makes an automaton that reports which of the expressions are found.
CAutomaton MakeForEach(const Texts& expressions)
{
    CAutomaton automaton(CAutomaton::EGoal::Each);
    for (const std::wstring& expression : expressions)
    {
        const std::optional<SExpressionSyntax> syntax = LuTestSuite::ParseExpression(expression);
        EXPECT_TRUE(syntax && CAutomaton::CanTake(*syntax)) << testing::PrintToString(expression);
        automaton.Add(syntax->root);
    }
    return automaton;
}

TEST(Automaton, FindsEachExpression)
{
    CAutomaton automaton = MakeForEach({L"abc", L"bc", L"c+d", L"x"});

    EXPECT_EQ(automaton.FindEach(L"xabcabc"), (Numbers{0, 1, 3}));
    EXPECT_EQ(automaton.FindEach(L"bccd"), (Numbers{1, 2}));
    EXPECT_EQ(automaton.FindEach(L"none"), Numbers());
    EXPECT_EQ(automaton.FindEach(L""), Numbers());
}

TEST(Automaton, FindsEachAnchoredExpression)
{
    CAutomaton automaton = MakeForEach({L"^ab", L"ab$", L"^ab$", L"^", L"$", L"^$"});

    EXPECT_EQ(automaton.FindEach(L"ab"), (Numbers{0, 1, 2, 3, 4}));
    EXPECT_EQ(automaton.FindEach(L"abc"), (Numbers{0, 3, 4}));
    EXPECT_EQ(automaton.FindEach(L"cab"), (Numbers{1, 3, 4}));
    EXPECT_EQ(automaton.FindEach(L""), (Numbers{3, 4, 5}));
}

TEST(Automaton, FindsExpressionsThatMatchTheEmptyTextInEachText)
{
    CAutomaton automaton = MakeForEach({L"", L"a*", L"b"});

    EXPECT_EQ(automaton.FindEach(L"xyz"), (Numbers{0, 1}));
    EXPECT_EQ(automaton.FindEach(L""), (Numbers{0, 1}));
    EXPECT_EQ(automaton.FindEach(L"ab"), (Numbers{0, 1, 2}));
}

TEST(Automaton, FindsNothingWithoutExpressions)
{
    EXPECT_EQ(CAutomaton(CAutomaton::EGoal::Each).FindEach(L"abc"), Numbers());
    EXPECT_FALSE(CAutomaton().IsFoundIn(L"abc"));
    EXPECT_FALSE(CAutomaton().IsFoundIn(L""));
}

TEST(Automaton, FindsThousandsOfTextsLikeSeparateSearches)
{
    CRandom random(1);
    Texts texts;
    CAutomaton automaton(CAutomaton::EGoal::Each);
    while (texts.size() < 3'000)
    {
        const std::wstring text = MakeName(random);
        LuTestSuite::SSyntaxNode sequence;
        for (const wchar_t character : text)
        {
            LuTestSuite::SSyntaxNode& node = sequence.children.emplace_back();
            node.kind = LuTestSuite::SSyntaxNode::EKind::Character;
            node.set = LuTestSuite::CCharacterSet(character);
        }
        automaton.Add(sequence);
        texts.push_back(text);
    }
    for (const std::wstring& name : MakeNames(random, 500))
    {
        Numbers expected;
        for (std::uint32_t number = 0; number < texts.size(); ++number)
        {
            if (name.find(texts[number]) != std::wstring::npos)
            {
                expected.push_back(number);
            }
        }
        ASSERT_EQ(automaton.FindEach(name), expected) << testing::PrintToString(name);
    }
}

TEST(Automaton, FindsThousandsOfExpressionsLikeSeparateSearches)
{
    CRandom random(2);
    CRandomExpression expressions(random);
    for (int round = 0; round < 100; ++round)
    {
        CAutomaton each(CAutomaton::EGoal::Each);
        CAutomaton any;
        std::vector<CAutomaton> alone;
        Texts sources;
        while (alone.size() < 40)
        {
            const std::wstring source = expressions.Make(2);
            const std::optional<SExpressionSyntax> syntax = LuTestSuite::ParseExpression(source);
            if (syntax && CAutomaton::CanTake(*syntax))
            {
                each.Add(syntax->root);
                any.Add(syntax->root);
                alone.emplace_back().Add(syntax->root);
                sources.push_back(source);
            }
        }
        for (const std::wstring& name : MakeNames(random, 20))
        {
            Numbers expected;
            for (std::uint32_t number = 0; number < alone.size(); ++number)
            {
                if (alone[number].IsFoundIn(name))
                {
                    expected.push_back(number);
                }
            }
            ASSERT_EQ(each.FindEach(name), expected) << testing::PrintToString(sources) << testing::PrintToString(name);
            ASSERT_EQ(any.IsFoundIn(name), !expected.empty());
        }
    }
}

} // namespace

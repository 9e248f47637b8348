/// Random expressions.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "tests/lutestsuite/selection/randomnames.h"

namespace RandomNames
{

/// Mostly valid expressions.
class CRandomExpression
{
public:
    explicit CRandomExpression(CRandom& random) : m_random(random) {}

    std::wstring Make(int depth)
    {
        std::wstring choice = makeSequence(depth);
        while (m_random.Below(5) == 0)
        {
            choice += L"|" + makeSequence(depth);
        }
        return choice;
    }

private:
    std::wstring makeSequence(int depth)
    {
        constexpr std::array<std::wstring_view, 8> c_Quantifiers = {L"*",    L"+",     L"?",     L"{2}",
                                                                    L"{1,}", L"{0,2}", L"{2,1}", L"*?"};
        std::wstring sequence;
        for (std::uint32_t count = m_random.Below(4); count > 0; --count)
        {
            sequence += makeAtom(depth);
            sequence += m_random.Below(3) == 0 ? m_random.Pick(c_Quantifiers) : L"";
        }
        return sequence;
    }

    std::wstring makeAtom(int depth)
    {
        constexpr std::array<std::wstring_view, 26> c_Atoms = {
            L"a", L"b",   L"c",   L"1",   L".",   L"\\.", L"\\w", L"\\W",   L"\\d",     L"\\D", L"\\s", L"\\S",  L"^",
            L"$", L"\\b", L"\\B", L"\\1", L"\\n", L"[",   L"]",   L"\\x61", L"\\u0062", L"ab",  L"}",   L"\\cA", L"{"};
        constexpr std::array<std::wstring_view, 4> c_Groups = {L"(", L"(?:", L"(?=", L"(?!"};
        if (depth > 0 && m_random.Below(4) == 0)
        {
            return m_random.Pick(c_Groups) + Make(depth - 1) + L")";
        }
        return m_random.Below(5) == 0 ? makeBracket() : m_random.Pick(c_Atoms);
    }

    std::wstring makeBracket()
    {
        constexpr std::array<std::wstring_view, 18> c_Members = {
            L"a",           L"b-c",       L"-",         L"\\w", L"\\D", L"\\]", L"[",  L"[:alpha:]", L"[:punct:]",
            L"[:nothing:]", L"[:cntrl:]", L"[:punct:]", L".",   L"\\-", L"1",   L"a-", L"\\n",       L"c-a"};
        std::wstring bracket = m_random.Below(3) == 0 ? L"[^" : L"[";
        for (std::uint32_t count = m_random.Below(4); count > 0; --count)
        {
            bracket += m_random.Pick(c_Members);
        }
        return bracket + L"]";
    }

    CRandom& m_random;
};

} // namespace RandomNames

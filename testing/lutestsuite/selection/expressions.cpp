#include "testing/lutestsuite/selection/expressions.h"

#include <algorithm>

#include "testing/lutestsuite/selection/requiredtext.h"

void LuTestSuite::CExpressions::Add(const std::wstring& source, const SExpressionSyntax* syntax,
                                    const CStackLimit& limit)
{
    m_expressions.emplace_back(source, source, limit);
    m_requiredTexts.AddText(syntax == nullptr ? std::wstring() : GetRequiredText(syntax->root));
}

bool LuTestSuite::CExpressions::IsFoundIn(const std::wstring& name)
{
    return !m_expressions.empty() && std::ranges::any_of(m_requiredTexts.FindEach(name), [&](std::uint32_t index) {
        return m_expressions[index].IsFoundIn(name);
    });
}

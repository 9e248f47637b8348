#include "testing/lutestsuite/selection/expressions.h"

#include <algorithm>
#include <string_view>

#include "testing/lutestsuite/selection/requiredtext.h"

namespace
{

using LuTestSuite::CCharacterSet;
using LuTestSuite::SSyntaxNode;

/// An empty text is found in every text.
SSyntaxNode toSyntax(std::wstring_view text)
{
    SSyntaxNode sequence;
    for (const wchar_t character : text)
    {
        SSyntaxNode& node = sequence.children.emplace_back();
        node.kind = SSyntaxNode::EKind::Character;
        node.set = CCharacterSet(character);
    }
    return sequence;
}

} // namespace

void LuTestSuite::CExpressions::Add(const std::wstring& source, const SExpressionSyntax* syntax,
                                    const CStackLimit& limit)
{
    m_expressions.emplace_back(source, source, limit);
    m_requiredTexts.Add(toSyntax(syntax == nullptr ? std::wstring() : GetRequiredText(syntax->root)));
}

bool LuTestSuite::CExpressions::IsFoundIn(const std::wstring& name)
{
    return !m_expressions.empty() && std::ranges::any_of(m_requiredTexts.FindEach(name), [&](std::uint32_t index) {
        return m_expressions[index].IsFoundIn(name);
    });
}

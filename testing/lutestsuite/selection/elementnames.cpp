#include "testing/lutestsuite/selection/elementnames.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <tuple>
#include <utility>

#include "testing/lutestsuite/selection/wildcard.h"

namespace
{

using LuTestSuite::SSyntaxNode;

SSyntaxNode makeNodeOfKind(SSyntaxNode::EKind kind)
{
    SSyntaxNode node;
    node.kind = kind;
    return node;
}

/// Returns the expression anchored at the start and the end of the text.
SSyntaxNode anchor(SSyntaxNode root)
{
    SSyntaxNode whole;
    whole.children.push_back(makeNodeOfKind(SSyntaxNode::EKind::TextBegin));
    whole.children.push_back(std::move(root));
    whole.children.push_back(makeNodeOfKind(SSyntaxNode::EKind::TextEnd));
    return whole;
}

} // namespace

LuTestSuite::CElementNames::CElementNames(std::vector<std::wstring> names) : m_names(std::move(names))
{
    for (Index index = 0; index < m_names.size(); ++index)
    {
        const std::wstring_view name = m_names[index];
        switch (GetWildcardKind(name))
        {
        case EWildcardKind::Plain:
            m_plain[name].push_back(index);
            break;
        case EWildcardKind::Wildcard:
            m_wildcards.push_back({index, JoinStars(name)});
            break;
        case EWildcardKind::Expression:
            addExpression(index);
            break;
        }
    }
    addRequiredTexts();
}

/// For each wildcard name, chooses that one of its texts that the fewest wildcard names contain. The longest text would
/// be a worse choice: it may be a beginning that all names share.
void LuTestSuite::CElementNames::addRequiredTexts()
{
    std::unordered_map<std::wstring_view, std::size_t> counts;
    for (const SWildcard& wildcard : m_wildcards)
    {
        for (const std::wstring_view text : GetTexts(wildcard.text))
        {
            ++counts[text];
        }
    }
    // A text of one or two characters is in most names.
    constexpr std::size_t c_Long = 3;
    const auto rank = [&counts](std::wstring_view text) {
        return std::tuple(text.size() < c_Long, counts.at(text), std::numeric_limits<std::size_t>::max() - text.size());
    };
    for (const SWildcard& wildcard : m_wildcards)
    {
        const std::vector<std::wstring_view> texts = GetTexts(wildcard.text);
        m_requiredTexts.AddText(texts.empty() ? std::wstring_view() : *std::ranges::min_element(texts, {}, rank));
    }
}

void LuTestSuite::CElementNames::addExpression(Index index)
{
    std::optional<SExpressionSyntax> syntax = ParseExpression(GetWildcardExpression(m_names[index]));
    if (!syntax || !CAutomaton::CanTake(*syntax))
    {
        m_forEngine.push_back(index);
        return;
    }
    m_automata.push_back({index, CAutomaton()});
    m_automata.back().automaton.Add(anchor(std::move(syntax->root)));
}

void LuTestSuite::CElementNames::Compile(const CStackLimit& limit, std::vector<std::wstring>& messages)
{
    for (const Index index : m_forEngine)
    {
        const std::wstring& name = m_names[index];
        try
        {
            m_expressions.push_back({index, {GetWildcardExpression(name), name, limit}});
        }
        catch (const std::regex_error& error)
        {
            messages.push_back(DescribeRefusal(error, L"Ungültiger Name", name));
        }
        catch (const std::wstring& message)
        {
            messages.push_back(message);
        }
    }
}

std::vector<std::size_t> LuTestSuite::CElementNames::Find(const std::wstring& caseName,
                                                          std::vector<std::wstring>& messages)
{
    std::vector<Index> found;
    if (const auto plain = m_plain.find(caseName); plain != m_plain.end())
    {
        found = plain->second;
    }
    if (!m_wildcards.empty())
    {
        for (const std::uint32_t each : m_requiredTexts.FindEach(caseName))
        {
            const SWildcard& wildcard = m_wildcards[each];
            if (MatchesWildcard(caseName, wildcard.text))
            {
                found.push_back(wildcard.index);
            }
        }
    }
    for (SAutomaton& each : m_automata)
    {
        if (each.automaton.IsFoundIn(caseName))
        {
            found.push_back(each.index);
        }
    }
    for (SExpression& each : m_expressions)
    {
        try
        {
            if (each.expression.Matches(caseName))
            {
                found.push_back(each.index);
            }
        }
        catch (const std::wstring& message)
        {
            if (!std::exchange(each.hasFailed, true))
            {
                messages.push_back(message);
            }
        }
    }
    std::ranges::sort(found);
    return found;
}

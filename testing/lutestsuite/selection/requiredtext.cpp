#include "testing/lutestsuite/selection/requiredtext.h"

#include <optional>
#include <utility>

namespace
{

using EKind = LuTestSuite::SSyntaxNode::EKind;

/// The longest run of single characters so far, and the current run.
class CLongestText
{
public:
    void Extend(wchar_t character) { m_run += character; }

    void EndRun() { Offer(std::exchange(m_run, {})); }

    void Offer(std::wstring text)
    {
        if (text.size() > m_longest.size())
        {
            m_longest = std::move(text);
        }
    }

    std::wstring Take()
    {
        EndRun();
        return std::move(m_longest);
    }

private:
    std::wstring m_run;
    std::wstring m_longest;
};

} // namespace

std::wstring LuTestSuite::GetRequiredText(const SSyntaxNode& node)
{
    switch (node.kind)
    {
    case EKind::Character:
        if (const std::optional<wchar_t> character = node.set.GetOnlyMember())
        {
            return {*character};
        }
        return {};
    case EKind::Repeat:
        return node.minimum > 0 ? GetRequiredText(node.children[0]) : std::wstring();
    case EKind::Sequence:
        break;
    default:
        return {};
    }
    CLongestText text;
    for (const SSyntaxNode& child : node.children)
    {
        const std::optional<wchar_t> character =
            child.kind == EKind::Character ? child.set.GetOnlyMember() : std::nullopt;
        if (character)
        {
            text.Extend(*character);
            continue;
        }
        text.EndRun();
        text.Offer(GetRequiredText(child));
    }
    return text.Take();
}

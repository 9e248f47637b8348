#include "testing/lutestsuite/selection/expressionsyntax.h"

#include <algorithm>
#include <utility>

namespace
{

using LuTestSuite::CCharacterSet;
using LuTestSuite::SExpressionSyntax;
using LuTestSuite::SSyntaxNode;
using EKind = SSyntaxNode::EKind;
using OptionalNode = std::optional<SSyntaxNode>;

/// The standard library, which runs on its own stack, handles deeper expressions.
constexpr int c_DeepestGroup = 50;

constexpr std::size_t c_MostCountDigits = 4;

std::optional<std::uint32_t> getDigitValue(wchar_t character)
{
    if (character >= L'0' && character <= L'9')
    {
        return character - L'0';
    }
    // One bit distinguishes upper from lower case in ASCII.
    const wchar_t letter = character | 0x20;
    return letter >= L'a' && letter <= L'f' ? std::optional<std::uint32_t>(letter - L'a' + 10) : std::nullopt;
}

SSyntaxNode makeNode(EKind kind)
{
    SSyntaxNode node;
    node.kind = kind;
    return node;
}

SSyntaxNode makeCharacter(CCharacterSet set)
{
    SSyntaxNode node = makeNode(EKind::Character);
    node.set = std::move(set);
    return node;
}

/// A recursive-descent parser. Each function reads one rule of the grammar and returns an empty value for text that it
/// does not support.
class CParser
{
public:
    explicit CParser(std::wstring_view rest) : m_rest(rest) {}

    std::optional<SExpressionSyntax> Parse()
    {
        OptionalNode root = readChoice(0);
        if (!root || !m_rest.empty())
        {
            return std::nullopt;
        }
        return SExpressionSyntax{std::move(*root), m_isRegular};
    }

private:
    bool isNext(wchar_t character) const { return !m_rest.empty() && m_rest.front() == character; }

    bool accept(std::wstring_view text)
    {
        const bool isThere = m_rest.starts_with(text);
        m_rest.remove_prefix(isThere ? text.size() : 0);
        return isThere;
    }

    std::optional<wchar_t> take()
    {
        if (m_rest.empty())
        {
            return std::nullopt;
        }
        const wchar_t character = m_rest.front();
        m_rest.remove_prefix(1);
        return character;
    }

    OptionalNode readChoice(int depth);
    OptionalNode readSequence(int depth);
    OptionalNode readTerm(int depth);
    OptionalNode readGroup(int depth);
    OptionalNode readLookAhead(bool isNegative, int depth);
    OptionalNode readAtom();
    OptionalNode readQuantified(OptionalNode atom);
    std::optional<std::uint32_t> readCount();
    bool readLimits(SSyntaxNode& repeat);

    OptionalNode makeUnmodelled();
    std::optional<CCharacterSet> readClassEscape();
    std::optional<wchar_t> readEscapedCharacter();
    std::optional<wchar_t> readCode(int digits);
    OptionalNode readBackReference();

    std::optional<CCharacterSet> readBracket();
    bool readBracketMember(CCharacterSet& set);
    bool readRangeOrCharacter(CCharacterSet& set);
    std::optional<wchar_t> readBracketCharacter();

    std::wstring_view m_rest;
    bool m_isRegular = true;
};

OptionalNode CParser::readChoice(int depth)
{
    SSyntaxNode choice = makeNode(EKind::Choice);
    do
    {
        OptionalNode sequence = readSequence(depth);
        if (!sequence)
        {
            return std::nullopt;
        }
        choice.children.push_back(std::move(*sequence));
    }
    while (accept(L"|"));
    return choice.children.size() == 1 ? std::move(choice.children[0]) : std::move(choice);
}

OptionalNode CParser::readSequence(int depth)
{
    SSyntaxNode sequence = makeNode(EKind::Sequence);
    while (!m_rest.empty() && !isNext(L'|') && !isNext(L')'))
    {
        OptionalNode term = readTerm(depth);
        if (!term)
        {
            return std::nullopt;
        }
        sequence.children.push_back(std::move(*term));
    }
    return sequence;
}

OptionalNode CParser::readTerm(int depth)
{
    // Assertions take no quantifier: a quantifier after them fails as an unsupported atom.
    if (accept(L"^"))
    {
        return makeNode(EKind::TextBegin);
    }
    if (accept(L"$"))
    {
        return makeNode(EKind::TextEnd);
    }
    if (accept(L"\\b") || accept(L"\\B"))
    {
        return makeUnmodelled();
    }
    if (accept(L"(?="))
    {
        return readLookAhead(false, depth + 1);
    }
    if (accept(L"(?!"))
    {
        return readLookAhead(true, depth + 1);
    }
    if (accept(L"("))
    {
        return readQuantified(readGroup(depth + 1));
    }
    return readQuantified(readAtom());
}

OptionalNode CParser::readGroup(int depth)
{
    accept(L"?:");
    if (depth > c_DeepestGroup)
    {
        return std::nullopt;
    }
    OptionalNode content = readChoice(depth);
    return accept(L")") ? std::move(content) : std::nullopt;
}

OptionalNode CParser::readLookAhead(bool isNegative, int depth)
{
    // A quantifier cannot begin the content. Checks for "?" here, because readGroup would accept "?:".
    OptionalNode content = isNext(L'?') ? std::nullopt : readGroup(depth);
    if (!content)
    {
        return std::nullopt;
    }
    SSyntaxNode node = *makeUnmodelled();
    if (isNegative)
    {
        node.kind = EKind::NotAhead;
        node.children.push_back(std::move(*content));
    }
    return node;
}

OptionalNode CParser::readAtom()
{
    if (accept(L"."))
    {
        return makeCharacter(CCharacterSet::GetAnyButLineEnds());
    }
    if (accept(L"["))
    {
        std::optional<CCharacterSet> set = readBracket();
        return set ? OptionalNode(makeCharacter(std::move(*set))) : std::nullopt;
    }
    if (accept(L"\\"))
    {
        if (std::optional<CCharacterSet> set = readClassEscape())
        {
            return makeCharacter(std::move(*set));
        }
        if (OptionalNode reference = readBackReference())
        {
            return reference;
        }
        const std::optional<wchar_t> character = readEscapedCharacter();
        return character ? OptionalNode(makeCharacter(CCharacterSet(*character))) : std::nullopt;
    }
    const std::optional<wchar_t> character = take();
    if (!character || std::wstring_view(L"*+?{").find(*character) != std::wstring_view::npos)
    {
        return std::nullopt;
    }
    return makeCharacter(CCharacterSet(*character));
}

OptionalNode CParser::readQuantified(OptionalNode atom)
{
    if (!atom || m_rest.empty())
    {
        return atom;
    }
    SSyntaxNode repeat = makeNode(EKind::Repeat);
    repeat.maximum = SSyntaxNode::sc_Unlimited;
    if (accept(L"+"))
    {
        repeat.minimum = 1;
    }
    else if (accept(L"?"))
    {
        repeat.maximum = 1;
    }
    else if (accept(L"{"))
    {
        if (!readLimits(repeat))
        {
            return std::nullopt;
        }
    }
    else if (!accept(L"*"))
    {
        return atom;
    }
    // Greediness does not matter: the caller only asks whether there is a match.
    accept(L"?");
    repeat.children.push_back(std::move(*atom));
    return repeat;
}

std::optional<std::uint32_t> CParser::readCount()
{
    const std::size_t length = std::min(m_rest.find_first_not_of(L"0123456789"), m_rest.size());
    if (length == 0 || length > c_MostCountDigits)
    {
        return std::nullopt;
    }
    std::uint32_t count = 0;
    for (const wchar_t digit : m_rest.substr(0, length))
    {
        count = count * 10 + static_cast<std::uint32_t>(digit - L'0');
    }
    m_rest.remove_prefix(length);
    return count;
}

bool CParser::readLimits(SSyntaxNode& repeat)
{
    const std::optional<std::uint32_t> minimum = readCount();
    if (!minimum)
    {
        return false;
    }
    repeat.minimum = *minimum;
    repeat.maximum = *minimum;
    if (accept(L","))
    {
        repeat.maximum = isNext(L'}') ? SSyntaxNode::sc_Unlimited : readCount().value_or(0);
    }
    return accept(L"}") && repeat.minimum <= repeat.maximum;
}

OptionalNode CParser::makeUnmodelled()
{
    m_isRegular = false;
    return makeNode(EKind::Unmodelled);
}

/// Called after a backslash.
std::optional<CCharacterSet> CParser::readClassEscape()
{
    for (const wchar_t name : {L'd', L's', L'w'})
    {
        const wchar_t negatedName = name - L'a' + L'A';
        if (accept({&name, 1}))
        {
            return CCharacterSet::FromClassName({&name, 1});
        }
        if (accept({&negatedName, 1}))
        {
            return CCharacterSet::FromClassName({&name, 1})->GetComplement();
        }
    }
    return std::nullopt;
}

/// Called after a backslash.
OptionalNode CParser::readBackReference()
{
    if (m_rest.empty() || m_rest.front() < L'1' || m_rest.front() > L'9')
    {
        return std::nullopt;
    }
    return readCount() ? makeUnmodelled() : std::nullopt;
}

/// Called after a backslash.
std::optional<wchar_t> CParser::readEscapedCharacter()
{
    constexpr std::pair<wchar_t, wchar_t> c_Controls[] = {
        {L'f', L'\f'}, {L'n', L'\n'}, {L'r', L'\r'}, {L't', L'\t'}, {L'v', L'\v'}};
    const std::optional<wchar_t> character = take();
    if (!character)
    {
        return std::nullopt;
    }
    for (const auto& [name, value] : c_Controls)
    {
        if (*character == name)
        {
            return value;
        }
    }
    if (*character == L'x' || *character == L'u')
    {
        return readCode(*character == L'x' ? 2 : 4);
    }
    // Digits, "\c" and the letters of assertions and classes do not stand for a character. A class cannot end a range.
    if (std::wstring_view(L"0123456789bBcdDsSwW").find(*character) != std::wstring_view::npos)
    {
        return std::nullopt;
    }
    return character;
}

std::optional<wchar_t> CParser::readCode(int digits)
{
    std::uint32_t code = 0;
    for (int index = 0; index < digits; ++index)
    {
        const std::optional<wchar_t> character = take();
        const std::optional<std::uint32_t> value = character ? getDigitValue(*character) : std::nullopt;
        if (!value)
        {
            return std::nullopt;
        }
        code = code * 16 + *value;
    }
    return static_cast<wchar_t>(code);
}

/// Called after "[".
std::optional<CCharacterSet> CParser::readBracket()
{
    const bool isNegated = accept(L"^");
    CCharacterSet set;
    while (!accept(L"]"))
    {
        if (!readBracketMember(set))
        {
            return std::nullopt;
        }
    }
    return isNegated ? set.GetComplement() : std::move(set);
}

bool CParser::readBracketMember(CCharacterSet& set)
{
    std::optional<CCharacterSet> members;
    if (accept(L"[:"))
    {
        const std::size_t length = m_rest.find(L":]");
        if (length == std::wstring_view::npos)
        {
            return false;
        }
        members = CCharacterSet::FromClassName(m_rest.substr(0, length));
        m_rest.remove_prefix(length + 2);
        if (!members)
        {
            return false;
        }
    }
    else
    {
        const std::wstring_view start = m_rest;
        members = accept(L"\\") ? readClassEscape() : std::nullopt;
        if (!members)
        {
            m_rest = start;
            return readRangeOrCharacter(set);
        }
    }
    set.Add(*members);
    // A class cannot start a range; a dash after it is supported only at the end of the set.
    return !isNext(L'-') || m_rest.starts_with(L"-]");
}

bool CParser::readRangeOrCharacter(CCharacterSet& set)
{
    const std::optional<wchar_t> first = readBracketCharacter();
    if (!first)
    {
        return false;
    }
    if (!isNext(L'-') || m_rest.starts_with(L"-]"))
    {
        set.Add(*first, *first);
        return true;
    }
    accept(L"-");
    const std::optional<wchar_t> last = readBracketCharacter();
    if (!last || *last < *first)
    {
        return false;
    }
    set.Add(*first, *last);
    return true;
}

/// A dash at this position is a plain character.
std::optional<wchar_t> CParser::readBracketCharacter()
{
    if (m_rest.starts_with(L"[.") || m_rest.starts_with(L"[=") || m_rest.starts_with(L"[:"))
    {
        return std::nullopt;
    }
    return accept(L"\\") ? readEscapedCharacter() : take();
}

} // namespace

std::optional<LuTestSuite::SExpressionSyntax> LuTestSuite::ParseExpression(std::wstring_view source)
{
    return CParser(source).Parse();
}

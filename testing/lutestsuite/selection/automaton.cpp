#include "testing/lutestsuite/selection/automaton.h"

#include <algorithm>
#include <iterator>
#include <type_traits>
#include <utility>

namespace
{

using LuTestSuite::CAutomaton;
using LuTestSuite::CCharacterSet;
using LuTestSuite::CodeUnit;
using LuTestSuite::SCodeRange;
using LuTestSuite::SExpressionSyntax;
using LuTestSuite::SSyntaxNode;

/// The largest number of nodes of an expression. Each character of a text may cost this number of steps, so the
/// standard library handles larger expressions.
constexpr std::size_t c_MostNodes = 15'000;

/// The standard library refuses expressions of more than 100,000 states; a few of these states do not come from the
/// syntax tree.
constexpr std::size_t c_MostEngineStates = 99'000;

/// How many numbers the states and transitions may store together. If they store more, all states are dropped and
/// created again.
constexpr std::size_t c_MostNumbers = std::size_t{8} << 20U;

/// The states that always exist.
constexpr std::uint32_t c_Found = 0;
constexpr std::uint32_t c_Dead = 1;

/// How the size of an expression is counted.
struct SMeasure
{
    std::size_t limit;       ///< larger sizes are reduced to this
    std::size_t group;       ///< size of each node of the tree except characters
    std::size_t alternative; ///< additional size of each child of a choice
    std::size_t copies;      ///< additional copies of a repeated child
};

/// Counts the nodes of the automaton. An empty group counts, too, because its repetitions take time.
constexpr SMeasure c_Nodes = {c_MostNodes + 1, 1, 1, 0};

/// An upper bound of the states that the standard library creates.
constexpr SMeasure c_EngineStates = {c_MostEngineStates + 1, 3, 3, 1};

/// The size of the tree, including the copies for repetition counts.
std::size_t getSize(const SSyntaxNode& tree, const SMeasure& measure)
{
    if (tree.kind == SSyntaxNode::EKind::Character)
    {
        return 1;
    }
    std::size_t size = measure.group;
    for (const SSyntaxNode& child : tree.children)
    {
        const std::size_t joint = tree.kind == SSyntaxNode::EKind::Choice ? measure.alternative : 0;
        size = std::min(size + getSize(child, measure) + joint, measure.limit);
    }
    if (tree.kind == SSyntaxNode::EKind::Repeat)
    {
        const bool isUnlimited = tree.maximum == SSyntaxNode::sc_Unlimited;
        size *= std::size_t{isUnlimited ? tree.minimum + 1 : std::max(tree.maximum, 1U)} + measure.copies;
    }
    return std::min(size, measure.limit);
}

} // namespace

bool CAutomaton::CanTake(const SExpressionSyntax& syntax)
{
    return syntax.isRegular && getSize(syntax.root, c_Nodes) <= c_MostNodes &&
           getSize(syntax.root, c_EngineStates) <= c_MostEngineStates;
}

void CAutomaton::Add(const SSyntaxNode& root)
{
    SNode end;
    end.number = static_cast<std::uint32_t>(m_entries.size());
    m_entries.push_back(addTree(root, addNode(end)));
}

void CAutomaton::AddText(std::wstring_view text)
{
    SSyntaxNode sequence;
    for (const wchar_t character : text)
    {
        SSyntaxNode& node = sequence.children.emplace_back();
        node.kind = SSyntaxNode::EKind::Character;
        node.set = CCharacterSet(character);
    }
    Add(sequence);
}

CAutomaton::NodeIndex CAutomaton::addNode(const SNode& node)
{
    m_nodes.push_back(node);
    return static_cast<NodeIndex>(m_nodes.size() - 1);
}

std::uint32_t CAutomaton::addSet(const CCharacterSet& set)
{
    const auto [entry, isNew] = m_setIndices.emplace(set, static_cast<std::uint32_t>(m_sets.size()));
    if (isNew)
    {
        m_sets.push_back(&entry->first);
    }
    return entry->second;
}

/// Adds the nodes of the tree, followed by `next`. Returns the first node.
CAutomaton::NodeIndex CAutomaton::addTree(const SSyntaxNode& tree, NodeIndex next)
{
    switch (tree.kind)
    {
    case SSyntaxNode::EKind::Character:
        return addNode({SNode::EKind::Character, next, 0, addSet(tree.set)});
    case SSyntaxNode::EKind::TextBegin:
        return addNode({SNode::EKind::TextBegin, next});
    case SSyntaxNode::EKind::TextEnd:
        return addNode({SNode::EKind::TextEnd, next});
    case SSyntaxNode::EKind::Repeat:
        return addRepeat(tree, next);
    case SSyntaxNode::EKind::Choice:
        return addChoice(tree, next);
    default:
        break;
    }
    for (auto child = tree.children.rbegin(); child != tree.children.rend(); ++child)
    {
        next = addTree(*child, next);
    }
    return next;
}

CAutomaton::NodeIndex CAutomaton::addRepeat(const SSyntaxNode& tree, NodeIndex next)
{
    const SSyntaxNode& child = tree.children[0];
    NodeIndex first = next;
    if (tree.maximum == SSyntaxNode::sc_Unlimited)
    {
        first = addNode({SNode::EKind::Fork, 0, next});
        const NodeIndex body = addTree(child, first);
        m_nodes[first].next = body;
    }
    else
    {
        for (std::uint32_t count = tree.minimum; count < tree.maximum; ++count)
        {
            const NodeIndex body = addTree(child, first);
            first = addNode({SNode::EKind::Fork, body, next});
        }
    }
    for (std::uint32_t count = 0; count < tree.minimum; ++count)
    {
        first = addTree(child, first);
    }
    return first;
}

CAutomaton::NodeIndex CAutomaton::addChoice(const SSyntaxNode& tree, NodeIndex next)
{
    NodeIndex first = addTree(tree.children.back(), next);
    for (std::size_t index = tree.children.size() - 1; index > 0; --index)
    {
        const NodeIndex child = addTree(tree.children[index - 1], next);
        first = addNode({SNode::EKind::Fork, child, first});
    }
    return first;
}

bool CAutomaton::IsFoundIn(std::wstring_view text)
{
    prepare();
    StateIndex state = m_first;
    for (const wchar_t character : text)
    {
        // No character leads out of c_Found and c_Dead.
        if (state <= c_Dead)
        {
            break;
        }
        state = getNext(state, character);
    }
    return m_states[state].isFoundAtEnd;
}

const std::vector<std::uint32_t>& CAutomaton::FindEach(std::wstring_view text)
{
    prepare();
    m_found = m_states[m_first].found;
    StateIndex state = m_first;
    for (const wchar_t character : text)
    {
        if (state == c_Dead)
        {
            break;
        }
        state = getNext(state, character);
        addFound(m_states[state].found);
    }
    addFound(m_states[state].foundAtEnd);
    std::ranges::sort(m_found);
    m_found.erase(std::unique(m_found.begin(), m_found.end()), m_found.end());
    return m_found;
}

void CAutomaton::prepare()
{
    if (std::exchange(m_isPrepared, true))
    {
        return;
    }
    m_marks.assign(m_nodes.size(), 0);
    m_isRestart.assign(m_nodes.size(), false);
    splitAlphabet();
    m_restartSteps.resize(m_classBegins.size());
    beginClosure();
    for (const NodeIndex entry : m_entries)
    {
        extendClosure(entry, false, false);
    }
    m_restart = m_closure;
    for (const NodeIndex node : m_restart)
    {
        m_isRestart[node] = true;
        if (m_nodes[node].kind == SNode::EKind::TextEnd)
        {
            m_restartAtEnd.push_back(node);
        }
    }
    clearStates();
}

void CAutomaton::splitAlphabet()
{
    m_classBegins.assign(1, 0);
    for (const CCharacterSet* const set : m_sets)
    {
        for (const SCodeRange& range : set->GetRanges())
        {
            m_classBegins.push_back(range.first);
            if (range.last != static_cast<CodeUnit>(-1))
            {
                m_classBegins.push_back(range.last + 1);
            }
        }
    }
    std::ranges::sort(m_classBegins);
    m_classBegins.erase(std::unique(m_classBegins.begin(), m_classBegins.end()), m_classBegins.end());
    for (std::size_t unit = 0; unit < sc_TableSize; ++unit)
    {
        m_table[unit] = static_cast<std::uint32_t>(findClass(static_cast<wchar_t>(unit)));
    }
}

std::size_t CAutomaton::findClass(wchar_t character) const
{
    const CodeUnit unit = static_cast<std::make_unsigned_t<wchar_t>>(character);
    return static_cast<std::size_t>(std::ranges::upper_bound(m_classBegins, unit) - m_classBegins.begin()) - 1;
}

void CAutomaton::clearStates()
{
    m_states.assign(2, {});
    m_states[c_Found].isFoundAtEnd = true;
    m_stateIndices.clear();
    m_transitions.assign(m_states.size() * m_classBegins.size(), sc_Unknown);
    m_numbers = 0;
    beginClosure();
    bool isFound = false;
    for (const NodeIndex entry : m_entries)
    {
        isFound = extendClosure(entry, true, false) || isFound;
    }
    if (isFound && m_goal == EGoal::Any)
    {
        m_first = c_Found;
        return;
    }
    // The first state is not in m_stateIndices, because it differs from a later state with the same nodes: the
    // beginning of the text can also be its end.
    m_first = appendState(true);
    // Adds the expressions that match the empty text to the first state only, so that the other states need not repeat
    // them.
    appendFound(m_restart, m_states[m_first].found);
}

void CAutomaton::beginClosure()
{
    m_closure.clear();
    ++m_mark;
}

/// Adds the nodes that can be reached from `node` without reading a character, except those of m_restart. True if the
/// end of an expression is reached.
bool CAutomaton::extendClosure(NodeIndex node, bool isBegin, bool isEnd)
{
    bool isFound = false;
    m_pending.assign(1, node);
    while (!m_pending.empty())
    {
        const NodeIndex index = m_pending.back();
        m_pending.pop_back();
        if (std::exchange(m_marks[index], m_mark) == m_mark)
        {
            continue;
        }
        const SNode& reached = m_nodes[index];
        const bool isPassed = reached.kind == SNode::EKind::Fork ||
                              (reached.kind == SNode::EKind::TextBegin && isBegin) ||
                              (reached.kind == SNode::EKind::TextEnd && isEnd);
        if (isPassed)
        {
            m_pending.push_back(reached.next);
        }
        if (reached.kind == SNode::EKind::Fork)
        {
            m_pending.push_back(reached.other);
        }
        else if (reached.kind != SNode::EKind::TextBegin && !m_isRestart[index])
        {
            m_closure.push_back(index);
        }
        isFound = isFound || reached.kind == SNode::EKind::Found;
    }
    return isFound;
}

/// For each of the nodes that accepts the characters of the class, calls extendClosure with the node's successor.
bool CAutomaton::extendClosureOver(const NodeIndices& nodes, std::size_t characterClass)
{
    bool isFound = false;
    for (const NodeIndex node : nodes)
    {
        const SNode& each = m_nodes[node];
        if (each.kind == SNode::EKind::Character && m_sets[each.set]->Contains(m_classBegins[characterClass]))
        {
            isFound = extendClosure(each.next, false, false) || isFound;
        }
    }
    return isFound;
}

/// Computes the step at the first call for a class and keeps it, because every transition over the class needs it.
const CAutomaton::SRestartStep& CAutomaton::getRestartStep(std::size_t characterClass)
{
    SRestartStep& step = m_restartSteps[characterClass];
    if (!std::exchange(step.isKnown, true))
    {
        beginClosure();
        step.isFound = extendClosureOver(m_restart, characterClass);
        step.nodes = m_closure;
    }
    return step;
}

void CAutomaton::appendFound(const NodeIndices& nodes, std::vector<std::uint32_t>& found) const
{
    for (const NodeIndex node : nodes)
    {
        if (m_nodes[node].kind == SNode::EKind::Found)
        {
            found.push_back(m_nodes[node].number);
        }
    }
}

/// Creates the state of the closure's nodes.
CAutomaton::StateIndex CAutomaton::appendState(bool isBegin)
{
    SState state;
    state.nodes = m_closure;
    appendFound(state.nodes, state.found);
    NodeIndices atEnd = m_restartAtEnd;
    std::ranges::copy_if(state.nodes, std::back_inserter(atEnd),
                         [this](NodeIndex node) { return m_nodes[node].kind == SNode::EKind::TextEnd; });
    beginClosure();
    for (const NodeIndex node : atEnd)
    {
        state.isFoundAtEnd = extendClosure(node, isBegin, true) || state.isFoundAtEnd;
    }
    appendFound(m_closure, state.foundAtEnd);
    m_numbers += m_classBegins.size() + 2 * state.nodes.size();
    m_transitions.resize(m_transitions.size() + m_classBegins.size(), sc_Unknown);
    m_states.push_back(std::move(state));
    return static_cast<StateIndex>(m_states.size() - 1);
}

/// The state of the closure's nodes; created if it is missing.
CAutomaton::StateIndex CAutomaton::findState()
{
    if (m_closure.empty() && m_restart.empty())
    {
        return c_Dead;
    }
    std::ranges::sort(m_closure);
    const auto [entry, isNew] = m_stateIndices.emplace(m_closure, sc_Unknown);
    if (isNew)
    {
        entry->second = appendState(false);
    }
    return entry->second;
}

CAutomaton::StateIndex CAutomaton::addTransition(StateIndex from, std::size_t characterClass)
{
    const NodeIndices nodes = m_states[from].nodes;
    const bool isFull = m_numbers > c_MostNumbers;
    if (isFull)
    {
        clearStates();
    }
    const SRestartStep& restarted = getRestartStep(characterClass);
    beginClosure();
    const bool isFound = extendClosureOver(nodes, characterClass) || restarted.isFound;
    for (const NodeIndex node : restarted.nodes)
    {
        if (std::exchange(m_marks[node], m_mark) != m_mark)
        {
            m_closure.push_back(node);
        }
    }
    const StateIndex to = isFound && m_goal == EGoal::Any ? c_Found : findState();
    if (!isFull)
    {
        m_transitions[from * m_classBegins.size() + characterClass] = to;
    }
    return to;
}

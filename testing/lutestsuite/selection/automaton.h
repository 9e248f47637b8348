/// Search for several expressions at once, in one pass over the text.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string_view>
#include <vector>

#include "testing/lutestsuite/selection/expressionsyntax.h"

namespace LuTestSuite
{

/// A deterministic automaton whose states are created when a text first reaches them. With existing states, the time
/// of a search is proportional to the length of the text for any expressions. For one thread at a time.
class CAutomaton
{
public:
    CAutomaton();
    CAutomaton(const CAutomaton&) = delete;
    CAutomaton& operator=(const CAutomaton&) = delete;
    CAutomaton(CAutomaton&&) = default;
    CAutomaton& operator=(CAutomaton&&) = default;
    ~CAutomaton() = default;

    /// True when the automaton can take the expression: it is regular, and its repetition counts do not make it huge.
    static bool CanTake(const SExpressionSyntax& syntax);

    /// Precondition: CanTake, and no search yet.
    void Add(const SSyntaxNode& root);

    /// True when one of the expressions is found anywhere in the text.
    bool IsFoundIn(std::wstring_view text);

private:
    using NodeIndex = std::uint32_t;
    using StateIndex = std::uint32_t;

    struct SNode
    {
        enum class EKind
        {
            Character, ///< goes to `next` over a character of the set
            Fork,      ///< goes to `next` and to `other`
            TextBegin,
            TextEnd,
            Found,
        };

        EKind kind = EKind::Found;
        NodeIndex next = 0;
        NodeIndex other = 0;
        std::uint32_t set = 0;
    };

    /// The nodes of kind Character and TextEnd that can come next, in ascending order.
    struct SState
    {
        std::vector<NodeIndex> nodes;
        bool isFoundAtEnd = false;
    };

    static constexpr std::size_t sc_TableSize = 128;

    NodeIndex addNode(const SNode& node);
    std::uint32_t addSet(const CCharacterSet& set);
    NodeIndex addTree(const SSyntaxNode& tree, NodeIndex next);
    NodeIndex addRepeat(const SSyntaxNode& tree, NodeIndex next);
    NodeIndex addChoice(const SSyntaxNode& tree, NodeIndex next);

    void prepare();
    void splitAlphabet();
    void clearStates();
    std::size_t findClass(wchar_t character) const;
    std::size_t getClass(wchar_t character) const
    {
        const auto unit = static_cast<std::make_unsigned_t<wchar_t>>(character);
        return unit < sc_TableSize ? m_table[unit] : findClass(character);
    }

    void beginClosure();
    bool extendClosure(NodeIndex node, bool isBegin, bool isEnd);
    StateIndex appendState(bool isBegin);
    StateIndex findState();
    StateIndex addTransition(StateIndex from, std::size_t characterClass);

    std::vector<SNode> m_nodes;
    std::vector<NodeIndex> m_entries; ///< where the expressions begin
    std::map<CCharacterSet, std::uint32_t> m_setIndices;
    std::vector<const CCharacterSet*> m_sets;

    // A class is a range of characters that are members of the same sets.
    std::vector<CodeUnit> m_classBegins;
    std::array<std::uint32_t, sc_TableSize> m_table{};

    bool m_isPrepared = false;
    StateIndex m_first = 0;
    std::vector<NodeIndex> m_restart; ///< where expressions can begin after the text's first character
    std::vector<SState> m_states;
    std::map<std::vector<NodeIndex>, StateIndex> m_stateIndices;
    std::vector<StateIndex> m_transitions; ///< for each state and class
    std::size_t m_numbers = 0;             ///< measure of the states' memory

    // The closure that is being computed.
    std::vector<NodeIndex> m_closure;
    std::vector<NodeIndex> m_pending;
    std::vector<std::uint32_t> m_marks;
    std::uint32_t m_mark = 0;
};

} // namespace LuTestSuite

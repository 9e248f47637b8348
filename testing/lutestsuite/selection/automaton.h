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

/// A deterministic automaton whose states are created when a text first reaches them. Once the states exist, the time
/// of a search is proportional to the length of the text, whatever the expressions are. For one thread at a time.
class CAutomaton
{
public:
    enum class EGoal
    {
        Any, ///< IsFoundIn: stops at the first expression
        Each ///< FindEach: tells which expressions are found
    };

    explicit CAutomaton(EGoal goal = EGoal::Any) : m_goal(goal) {}
    CAutomaton(const CAutomaton&) = delete;
    CAutomaton& operator=(const CAutomaton&) = delete;
    CAutomaton(CAutomaton&&) = default;
    CAutomaton& operator=(CAutomaton&&) = default;
    ~CAutomaton() = default;

    /// True if the automaton supports the expression: it is regular, and its repetition counts do not make it huge.
    static bool CanTake(const SExpressionSyntax& syntax);

    /// Adds an expression. Precondition: CanTake is true, and no search has been made.
    void Add(const SSyntaxNode& root);

    /// Adds an expression that matches exactly this text; an empty text is found in every text. Precondition: no search
    /// has been made.
    void AddText(std::wstring_view text);

    /// True if one of the expressions is found anywhere in the text. Precondition: EGoal::Any.
    bool IsFoundIn(std::wstring_view text);

    /// The numbers of the expressions that are found anywhere in the text, ascending; the expression that was added
    /// first has number 0. Valid until the next search. Precondition: EGoal::Each.
    const std::vector<std::uint32_t>& FindEach(std::wstring_view text);

private:
    using NodeIndex = std::uint32_t;
    using StateIndex = std::uint32_t;
    using NodeIndices = std::vector<NodeIndex>;

    struct SNode
    {
        enum class EKind
        {
            Character, ///< goes to `next` over a character of the set
            Fork,      ///< goes to `next` and to `other`
            TextBegin,
            TextEnd,
            Found, ///< the end of the expression `number`
        };

        EKind kind = EKind::Found;
        NodeIndex next = 0;
        NodeIndex other = 0;
        std::uint32_t set = 0;
        std::uint32_t number = 0;
    };

    struct SState
    {
        NodeIndices nodes;                ///< the nodes that the text can reach, except those of m_restart; ascending
        std::vector<std::uint32_t> found; ///< the expressions that end here
        std::vector<std::uint32_t> foundAtEnd; ///< expressions that end here if the text ends here
        bool isFoundAtEnd = false;
    };

    /// The nodes that are reached from m_restart over a character of a class.
    struct SRestartStep
    {
        bool isKnown = false;
        bool isFound = false;
        NodeIndices nodes;
    };

    static constexpr std::size_t sc_TableSize = 128;
    static constexpr StateIndex sc_Unknown = static_cast<StateIndex>(-1);

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
    bool extendClosureOver(const NodeIndices& nodes, std::size_t characterClass);
    const SRestartStep& getRestartStep(std::size_t characterClass);
    void appendFound(const NodeIndices& nodes, std::vector<std::uint32_t>& found) const;
    StateIndex appendState(bool isBegin);
    StateIndex findState();
    StateIndex addTransition(StateIndex from, std::size_t characterClass);
    StateIndex getNext(StateIndex state, wchar_t character)
    {
        const std::size_t characterClass = getClass(character);
        const StateIndex next = m_transitions[state * m_classBegins.size() + characterClass];
        return next != sc_Unknown ? next : addTransition(state, characterClass);
    }
    void addFound(const std::vector<std::uint32_t>& found)
    {
        // In most states no expression ends.
        if (!found.empty())
        {
            m_found.insert(m_found.end(), found.begin(), found.end());
        }
    }

    EGoal m_goal;
    std::vector<SNode> m_nodes;
    NodeIndices m_entries; ///< where the expressions begin
    std::map<CCharacterSet, std::uint32_t> m_setIndices;
    std::vector<const CCharacterSet*> m_sets;

    // A class is a range of characters that are members of the same sets.
    std::vector<CodeUnit> m_classBegins;
    std::array<std::uint32_t, sc_TableSize> m_table{};

    bool m_isPrepared = false;
    StateIndex m_first = 0;
    NodeIndices m_restart;                    ///< where expressions can begin at any position; each state implies them
    NodeIndices m_restartAtEnd;               ///< those of kind TextEnd
    std::vector<bool> m_isRestart;            ///< for each node
    std::vector<SRestartStep> m_restartSteps; ///< for each class
    std::vector<SState> m_states;
    std::map<NodeIndices, StateIndex> m_stateIndices;
    std::vector<StateIndex> m_transitions; ///< for each state and class
    std::size_t m_numbers = 0;             ///< measure of the states' memory

    // The closure that is being computed.
    NodeIndices m_closure;
    NodeIndices m_pending;
    std::vector<std::uint32_t> m_marks;
    std::uint32_t m_mark = 0;

    std::vector<std::uint32_t> m_found; ///< result of FindEach
};

} // namespace LuTestSuite

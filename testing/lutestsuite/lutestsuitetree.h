/// The unit tests as a tree of folders, classes and cases, for hosts that show it.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "testing/lutestsuite/lutestsuiteexport.h"
#include "testing/lutestsuite/lutestsuiterun.h"

/// A plain value. Refers to unit tests and cases by their indices in the list passed to Build, so that list may be
/// destroyed. Any thread may read the tree.
class LUTESTSUITE_API LuTestSuiteTree
{
public:
    /// "No such index." Not constexpr, because constexpr implies inline, and a Windows library exports an inline object
    /// only if the library itself uses it.
    static const std::uint32_t sc_uiInvalid = std::numeric_limits<std::uint32_t>::max();

    enum EKind : std::uint32_t
    {
        eK_Group = 0, ///< a folder
        eK_Class = 1  ///< a unit test, whose children are cases
    };

    /// Node 0 is the root. The children of a node are consecutive, and so are the cases of a class node.
    struct SNode
    {
        EKind kind = eK_Group;
        std::wstring name;                     ///< name of one folder; root: last folder that all paths share, or "-"
        std::uint32_t unitTest = sc_uiInvalid; ///< class nodes: index into the unit tests of Build
        std::uint32_t parent = sc_uiInvalid;   ///< sc_uiInvalid for the root
        std::uint32_t firstChild = sc_uiInvalid;
        std::uint32_t childCount = 0;
        std::uint32_t firstCase = sc_uiInvalid; ///< class nodes: index of the first case
        std::uint32_t caseCount = 0;            ///< number of cases in the whole subtree
    };

    /// A case of a class node.
    struct SCase
    {
        std::uint32_t kind = 0; ///< see STestCase::GetKind
        std::wstring name;
        std::uint32_t testCase = 0; ///< index into its unit test's cases
        std::uint32_t node = 0;     ///< its class node
    };

    /// Replaces the tree. Classes and cases are ordered by path and name, character by character. A unit test without
    /// cases has no node; an empty list makes a tree without nodes. Throws LbException if the list is inconsistent: two
    /// unit tests have the same path, or one lies in the other's folder. The tree is then incomplete.
    void Build(const std::vector<LuTestSuite::SUnitTest>& tests);

    /// The caller keeps indices in range; they are not checked.
    std::uint32_t GetNodeCount() const { return static_cast<std::uint32_t>(m_nodes.size()); }
    const SNode& GetNode(std::uint32_t index) const { return m_nodes[index]; }
    std::uint32_t GetCaseCount() const { return static_cast<std::uint32_t>(m_cases.size()); }
    const SCase& GetCase(std::uint32_t index) const { return m_cases[index]; }

private:
    /// Entries from `first` to `end`, not including `end`.
    struct SRange
    {
        std::uint32_t first;
        std::uint32_t end;
    };

    /// The names of the folders of a case, beginning at the root, then the name of the case.
    using Components = std::vector<std::wstring_view>;

    void buildRecursive(const std::vector<Components>& entries, const SRange& range, std::uint32_t depth,
                        std::uint32_t nodeIndex);
    void addGroups(const std::vector<Components>& entries, const SRange& range, std::uint32_t depth,
                   std::uint32_t nodeIndex);
    void addCases(const std::vector<Components>& entries, const SRange& range, std::uint32_t depth,
                  std::uint32_t nodeIndex);

    std::vector<SNode> m_nodes;
    std::vector<SCase> m_cases;
    std::vector<std::uint32_t> m_classNodes;
};

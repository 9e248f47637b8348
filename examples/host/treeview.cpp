#include "examples/host/treeview.h"

#include <set>
#include <utility>

#include "base/lbformat.h"
#include "testing/lutestsuite/lutestsuitetree.h"

namespace
{

using UnitTests = std::vector<LuTestSuite::SUnitTest>;

/// Cases by the directory of their unit test and by name.
using CaseSet = std::set<std::pair<std::wstring, std::wstring>>;

CaseSet toSet(const UnitTests& unitTests)
{
    CaseSet cases;
    for (const LuTestSuite::SUnitTest& unitTest : unitTests)
    {
        for (const LuTestSuite::STestCase& testCase : unitTest.cases)
        {
            cases.emplace(unitTest.dataDirectory, testCase.name);
        }
    }
    return cases;
}

class CTreeView
{
public:
    CTreeView(const UnitTests& found, const UnitTests& selected) : m_found(found), m_selected(toSet(selected))
    {
        m_tree.Build(found);
    }

    std::wstring Draw()
    {
        if (m_tree.GetNodeCount() != 0)
        {
            drawNode(0, 0);
        }
        return m_text;
    }

private:
    static constexpr std::size_t sc_Indent = 2;

    void drawNode(std::uint32_t index, std::size_t depth)
    {
        const LuTestSuiteTree::SNode& node = m_tree.GetNode(index);
        m_text.append(depth * sc_Indent, L' ').append(LbFormat(L"%s (%u)\n", node.name, node.caseCount));
        for (std::uint32_t child = 0; child < node.childCount; ++child)
        {
            drawNode(node.firstChild + child, depth + 1);
        }
        if (node.kind == LuTestSuiteTree::eK_Class)
        {
            drawCases(node, depth + 1);
        }
    }

    void drawCases(const LuTestSuiteTree::SNode& node, std::size_t depth)
    {
        const std::wstring& directory = m_found[node.unitTest].dataDirectory;
        for (std::uint32_t index = 0; index < node.caseCount; ++index)
        {
            const std::wstring& name = m_tree.GetCase(node.firstCase + index).name;
            const wchar_t* const box = m_selected.contains({directory, name}) ? L"[x]" : L"[ ]";
            m_text.append(depth * sc_Indent, L' ').append(LbFormat(L"%s %s\n", box, name));
        }
    }

    const UnitTests& m_found;
    CaseSet m_selected;
    LuTestSuiteTree m_tree;
    std::wstring m_text;
};

} // namespace

std::wstring DrawTree(const UnitTests& found, const UnitTests& selected)
{
    return CTreeView(found, selected).Draw();
}

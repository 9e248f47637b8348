#include "testing/lutestsuite/lutestsuitetree.h"

#include <algorithm>
#include <iterator>

#include "base/lbexception.h"
#include "base/lbpath.h"
#include "testing/lutestsuite/tree/treeorder.h"

namespace
{

using UnitTests = std::vector<LuTestSuite::SUnitTest>;

/// The position of a case in the list of unit tests.
struct SEntry
{
    std::uint32_t unitTest;
    std::uint32_t testCase;
};

/// The root's name, and for each unit test its path, which begins with the root's name.
struct SPaths
{
    std::wstring rootName;
    std::vector<std::wstring> paths;
};

/// Uses one kind of separator, so that equal folders have equal texts.
std::wstring toUniform(std::wstring path)
{
    std::ranges::replace_if(path, LbPath::IsSeparator, LbPath::c_Separator);
    return path;
}

std::wstring_view getCommonPrefix(const std::vector<std::wstring>& paths)
{
    std::wstring_view prefix = paths.front();
    for (const std::wstring& path : paths)
    {
        const auto end = std::ranges::mismatch(prefix, path).in1;
        prefix = prefix.substr(0, static_cast<std::size_t>(end - prefix.begin()));
    }
    return prefix;
}

/// The last folder that all paths share becomes the root.
SPaths getPaths(const UnitTests& tests)
{
    SPaths result;
    for (const LuTestSuite::SUnitTest& test : tests)
    {
        result.paths.push_back(toUniform(test.dataDirectory));
    }
    std::wstring_view prefix = getCommonPrefix(result.paths);
    const std::size_t last = prefix.rfind(LbPath::c_Separator);
    if (last != std::wstring_view::npos)
    {
        prefix = prefix.substr(0, last);
        result.rootName = prefix.substr(prefix.rfind(LbPath::c_Separator) + 1);
    }
    if (result.rootName.empty())
    {
        result.rootName = L"-";
    }
    for (std::wstring& path : result.paths)
    {
        // Paths on different drives share no folder, so the root's name is put in front of each whole path.
        path = last == std::wstring_view::npos ? result.rootName + LbPath::c_Separator + path
                                               : result.rootName + path.substr(last);
    }
    return result;
}

/// All cases, ordered by path, then by name.
std::vector<SEntry> getSortedEntries(const UnitTests& tests, const std::vector<std::wstring>& paths)
{
    std::vector<SEntry> entries;
    for (std::uint32_t unitTest = 0; unitTest < tests.size(); ++unitTest)
    {
        for (std::uint32_t testCase = 0; testCase < tests[unitTest].cases.size(); ++testCase)
        {
            entries.push_back({unitTest, testCase});
        }
    }
    // Comparing ranks is cheaper than comparing paths, which are long and mostly equal.
    const std::vector<std::uint32_t> ranks = LuTestSuite::GetRanks(paths);
    std::ranges::stable_sort(entries, [&](const SEntry& a, const SEntry& b) {
        return ranks[a.unitTest] != ranks[b.unitTest] ? ranks[a.unitTest] < ranks[b.unitTest]
                                                      : LuTestSuite::IsBefore(tests[a.unitTest].cases[a.testCase].name,
                                                                              tests[b.unitTest].cases[b.testCase].name);
    });
    return entries;
}

std::vector<std::wstring_view> splitPath(std::wstring_view path)
{
    std::vector<std::wstring_view> components;
    for (std::size_t start = 0; start < path.size();)
    {
        const std::size_t end = std::min(path.find(LbPath::c_Separator, start), path.size());
        if (end > start)
        {
            components.push_back(path.substr(start, end - start));
        }
        start = end + 1;
    }
    return components;
}

/// The components of each unit test's path; the first is the root's name.
std::vector<std::vector<std::wstring_view>> splitPaths(const SPaths& paths)
{
    std::vector<std::vector<std::wstring_view>> result;
    for (const std::wstring& path : paths.paths)
    {
        result.push_back(splitPath(path));
        if (result.back().front() != paths.rootName)
        {
            throw LbException(L"LuTestSuiteTree::Build", {});
        }
    }
    return result;
}

} // namespace

const std::uint32_t LuTestSuiteTree::sc_uiInvalid;

void LuTestSuiteTree::Build(const UnitTests& tests)
{
    m_nodes.clear();
    m_cases.clear();
    m_classNodes.clear();
    if (tests.empty())
    {
        return;
    }
    const SPaths paths = getPaths(tests);
    const std::vector<Components> folders = splitPaths(paths);
    const std::vector<SEntry> entries = getSortedEntries(tests, paths.paths);
    std::vector<Components> components;
    components.reserve(entries.size());
    for (const SEntry& entry : entries)
    {
        const Components& path = folders[entry.unitTest];
        components.emplace_back().reserve(path.size() + 1);
        components.back() = path;
        components.back().emplace_back(tests[entry.unitTest].cases[entry.testCase].name);
    }
    m_cases.reserve(entries.size());
    m_nodes.emplace_back().name = paths.rootName;
    buildRecursive(components, {0, static_cast<std::uint32_t>(entries.size())}, 1, 0);
    if (m_cases.size() != entries.size())
    {
        throw LbException();
    }
    // So far SCase::testCase is an index into `entries`. Replaces it by the index of the case in its unit test, and
    // checks that all entries of a node belong to the node's unit test.
    const auto resolve = [&](SCase& treeCase, const LuTestSuite::SUnitTest& test) {
        treeCase.testCase = entries[treeCase.testCase].testCase;
        if (treeCase.testCase >= test.cases.size() || test.cases[treeCase.testCase].name != treeCase.name)
        {
            throw LbException();
        }
        treeCase.kind = test.cases[treeCase.testCase].GetKind();
    };
    for (const std::uint32_t classNode : m_classNodes)
    {
        SNode& node = m_nodes[classNode];
        node.unitTest = entries[m_cases[node.firstCase].testCase].unitTest;
        for (std::uint32_t index = 0; index < node.caseCount; ++index)
        {
            resolve(m_cases[node.firstCase + index], tests[node.unitTest]);
        }
    }
}

void LuTestSuiteTree::buildRecursive(const std::vector<Components>& entries, const SRange& range, std::uint32_t depth,
                                     std::uint32_t nodeIndex)
{
    if (range.first >= entries.size())
    {
        return;
    }
    const std::size_t caseDepth = entries[range.first].size() - 1;
    if (depth < caseDepth)
    {
        addGroups(entries, range, depth, nodeIndex);
    }
    else if (depth == caseDepth)
    {
        addCases(entries, range, depth, nodeIndex);
    }
}

void LuTestSuiteTree::addGroups(const std::vector<Components>& entries, const SRange& range, std::uint32_t depth,
                                std::uint32_t nodeIndex)
{
    std::vector<SRange> runs;
    for (std::uint32_t index = range.first; index < range.end; ++index)
    {
        if (depth >= entries[index].size())
        {
            throw LbException(L"LuTestSuiteTree::buildRecursive", {});
        }
        if (runs.empty() || entries[index][depth] != entries[runs.back().first][depth])
        {
            runs.push_back({index, index});
        }
        runs.back().end = index + 1;
    }
    const std::uint32_t firstChild = GetNodeCount();
    m_nodes[nodeIndex].firstChild = firstChild;
    m_nodes[nodeIndex].childCount = static_cast<std::uint32_t>(runs.size());
    for (const SRange& run : runs)
    {
        SNode& child = m_nodes.emplace_back();
        child.name = entries[run.first][depth];
        child.parent = nodeIndex;
    }
    for (std::uint32_t run = 0; run < runs.size(); ++run)
    {
        buildRecursive(entries, runs[run], depth + 1, firstChild + run);
        m_nodes[nodeIndex].caseCount += m_nodes[firstChild + run].caseCount;
    }
}

void LuTestSuiteTree::addCases(const std::vector<Components>& entries, const SRange& range, std::uint32_t depth,
                               std::uint32_t nodeIndex)
{
    SNode& node = m_nodes[nodeIndex];
    node.kind = eK_Class;
    node.firstCase = GetCaseCount();
    m_classNodes.push_back(nodeIndex);
    for (std::uint32_t index = range.first; index < range.end; ++index)
    {
        if (entries[index].size() == depth + 1)
        {
            m_cases.push_back({0, std::wstring(entries[index].back()), index, nodeIndex});
            ++node.caseCount;
        }
    }
}

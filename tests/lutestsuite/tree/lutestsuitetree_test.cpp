#include "testing/lutestsuite/lutestsuitetree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/lbpath.h"
#include "tests/support/runtest.h"

namespace
{

using testing::ElementsAre;
using UnitTests = std::vector<LuTestSuite::SUnitTest>;

/// A unit test in a directory, with "/" between folders.
LuTestSuite::SUnitTest makeTest(const std::wstring& directory, const std::vector<std::wstring>& caseNames)
{
    LuTestSuite::SUnitTest test = MakeUnitTest(LbPath::GetLastComponent(LbPath::ToNative(directory)), caseNames);
    test.dataDirectory = LbPath::ToNative(directory);
    return test;
}

LuTestSuiteTree build(const UnitTests& tests)
{
    LuTestSuiteTree tree;
    tree.Build(tests);
    return tree;
}

/// A node with its subtree, as "name(child child)"; a class with its cases, as "name{case case}".
std::wstring print(const LuTestSuiteTree& tree, std::uint32_t index = 0)
{
    const LuTestSuiteTree::SNode& node = tree.GetNode(index);
    const bool isClass = node.kind == LuTestSuiteTree::eK_Class;
    std::wstring text = node.name + (isClass ? L"{" : L"(");
    for (std::uint32_t child = 0; child < node.childCount; ++child)
    {
        text += (child > 0 ? L" " : L"") + print(tree, node.firstChild + child);
    }
    for (std::uint32_t each = 0; isClass && each < node.caseCount; ++each)
    {
        text += (each > 0 ? L" " : L"") + tree.GetCase(node.firstCase + each).name;
    }
    return text + (isClass ? L"}" : L")");
}

std::uint32_t findNode(const LuTestSuiteTree& tree, const std::wstring& name)
{
    for (std::uint32_t index = 0; index < tree.GetNodeCount(); ++index)
    {
        if (tree.GetNode(index).name == name)
        {
            return index;
        }
    }
    ADD_FAILURE() << "node not found";
    return 0;
}

/// Builds a tree from an invalid list and returns the function that the exception names.
std::wstring getThrowingFunction(const UnitTests& tests)
{
    try
    {
        build(tests);
    }
    catch (const LbException& exception)
    {
        EXPECT_EQ(exception.GetSourceFile(), L"lutestsuitetree");
        EXPECT_EQ(exception.GetMessageText(), L"");
        return exception.GetFunction();
    }
    return L"none";
}

TEST(LuTestSuiteTree, IsEmptyAtFirst)
{
    const LuTestSuiteTree tree;

    EXPECT_EQ(tree.GetNodeCount(), 0U);
    EXPECT_EQ(tree.GetCaseCount(), 0U);
}

TEST(LuTestSuiteTree, HasNoRootWithoutUnitTests)
{
    LuTestSuiteTree tree = build({makeTest(L"/d/CA/", {L"x"})});

    tree.Build({});

    EXPECT_EQ(tree.GetNodeCount(), 0U);
    EXPECT_EQ(tree.GetCaseCount(), 0U);
}

TEST(LuTestSuiteTree, GroupsClassesByFolders)
{
    const LuTestSuiteTree tree =
        build({makeTest(L"/disk/data/base/CA/", {L"x", L"y"}), makeTest(L"/disk/data/base/text/CB/", {L"z"}),
               makeTest(L"/disk/data/CC/", {L"w"})});

    EXPECT_EQ(print(tree), L"data(CC{w} base(CA{x y} text(CB{z})))");
}

/// All platforms use the order of Windows, where the separator of folders sorts after the digits.
TEST(LuTestSuiteTree, OrdersFoldersByTheSeparatorOfWindows)
{
    EXPECT_EQ(print(build({makeTest(L"/disk/data/CA/", {L"x"}), makeTest(L"/disk/data/CA1/", {L"x"}),
                           makeTest(L"/disk/data/CAa/", {L"x"})})),
              L"data(CA1{x} CA{x} CAa{x})");
}

TEST(LuTestSuiteTree, OrdersCharactersByTheirCodeUnits)
{
    EXPECT_EQ(print(build({makeTest(L"/disk/data/CA/", {L"\uFF5E", L"\U0001F600", L"\uD7FF", L"\uFF5Ea"})})),
              L"CA{\uD7FF \U0001F600 \uFF5E \uFF5Ea}");
}

TEST(LuTestSuiteTree, NamesTheRootAfterTheLastSharedFolder)
{
    // The paths also share "CAa", which is not a complete folder name.
    EXPECT_EQ(build({makeTest(L"/disk/data/CAa/", {L"x"}), makeTest(L"/disk/data/CAab/", {L"x"})}).GetNode(0).name,
              L"data");
}

TEST(LuTestSuiteTree, NamesTheRootOfUnrelatedFoldersWithADash)
{
    EXPECT_EQ(print(build({makeTest(L"/d/CA/", {L"x"}), makeTest(L"/e/CB/", {L"y"})})), L"-(d(CA{x}) e(CB{y}))");
}

TEST(LuTestSuiteTree, NamesTheRootOfPathsWithoutAnySharedCharacterWithADash)
{
    EXPECT_EQ(print(build({makeTest(L"C:/CA/", {L"x"}), makeTest(L"D:/CB/", {L"y"})})), L"-(C:(CA{x}) D:(CB{y}))");
}

TEST(LuTestSuiteTree, NamesTheRootAfterTheFirstFolderOfARelativePath)
{
    EXPECT_EQ(print(build({makeTest(L"d/CA/", {L"x"}), makeTest(L"d/CB/", {L"y"})})), L"d(CA{x} CB{y})");
}

TEST(LuTestSuiteTree, ConsistsOfTheClassNodeForOneUnitTest)
{
    EXPECT_EQ(print(build({makeTest(L"/d/CA/", {L"x"})})), L"CA{x}");
}

TEST(LuTestSuiteTree, OfOneUnitTestWithoutTrailingSeparatorHasTheFolderAsRoot)
{
    EXPECT_EQ(print(build({makeTest(L"/d/CA", {L"x"})})), L"d(CA{x})");
}

TEST(LuTestSuiteTree, SkipsDoubledSeparators)
{
    EXPECT_EQ(print(build({makeTest(L"/d/a//CA/", {L"x"}), makeTest(L"/d/b/CB//", {L"y"})})), L"d(a(CA{x}) b(CB{y}))");
}

TEST(LuTestSuiteTree, OrdersNamesByCharacterValues)
{
    const LuTestSuiteTree tree = build({makeTest(L"/d/Cb/", {L"ä", L"b", L"B", L"a 2", L"a 10"}),
                                        makeTest(L"/d/CZ/", {L"x"}), makeTest(L"/d/CÄ/", {L"x"})});

    EXPECT_EQ(print(tree), L"d(CZ{x} Cb{B a 10 a 2 b ä} CÄ{x})");
}

TEST(LuTestSuiteTree, DoesNotSplitAFolderIfAnotherNameStartsWithItsName)
{
    // A blank sorts before a separator.
    const LuTestSuiteTree tree =
        build({makeTest(L"/d/a/CB/", {L"x"}), makeTest(L"/d/a b/CC/", {L"y"}), makeTest(L"/d/a/CA/", {L"z"})});

    EXPECT_EQ(print(tree), L"d(a b(CC{y}) a(CA{z} CB{x}))");
}

TEST(LuTestSuiteTree, HasNoNodeForAUnitTestWithoutCases)
{
    const LuTestSuiteTree tree = build({makeTest(L"/d/a/CA/", {}), makeTest(L"/d/b/CB/", {L"y"})});

    EXPECT_EQ(print(tree), L"d(b(CB{y}))");
}

TEST(LuTestSuiteTree, HasOnlyARootWhenNoUnitTestHasCases)
{
    const LuTestSuiteTree tree = build({makeTest(L"/d/CA/", {}), makeTest(L"/d/CB/", {})});

    ASSERT_EQ(tree.GetNodeCount(), 1U);
    EXPECT_EQ(tree.GetNode(0).name, L"d");
    EXPECT_EQ(tree.GetNode(0).kind, LuTestSuiteTree::eK_Group);
    EXPECT_EQ(tree.GetNode(0).parent, LuTestSuiteTree::sc_uiInvalid);
    EXPECT_EQ(tree.GetNode(0).firstChild, LuTestSuiteTree::sc_uiInvalid);
    EXPECT_EQ(tree.GetNode(0).caseCount, 0U);
}

TEST(LuTestSuiteTree, LinksNodesWithParentsAndUnitTests)
{
    const LuTestSuiteTree tree = build({makeTest(L"/d/b/CB/", {L"y"}), makeTest(L"/d/a/CA/", {L"x"})});
    const LuTestSuiteTree::SNode& node = tree.GetNode(findNode(tree, L"CA"));

    EXPECT_EQ(node.kind, LuTestSuiteTree::eK_Class);
    EXPECT_EQ(node.unitTest, 1U);
    EXPECT_EQ(node.firstChild, LuTestSuiteTree::sc_uiInvalid);
    EXPECT_EQ(node.childCount, 0U);
    EXPECT_EQ(node.parent, findNode(tree, L"a"));
    EXPECT_EQ(tree.GetNode(node.parent).parent, 0U);
    EXPECT_EQ(tree.GetNode(node.parent).unitTest, LuTestSuiteTree::sc_uiInvalid);
    EXPECT_EQ(tree.GetNode(node.parent).firstCase, LuTestSuiteTree::sc_uiInvalid);
}

TEST(LuTestSuiteTree, CountsTheCasesOfSubtrees)
{
    const LuTestSuiteTree tree =
        build({makeTest(L"/d/a/CA/", {L"x", L"y"}), makeTest(L"/d/a/CB/", {L"x"}), makeTest(L"/d/b/CC/", {L"x"})});

    EXPECT_EQ(tree.GetNode(0).caseCount, 4U);
    EXPECT_EQ(tree.GetNode(findNode(tree, L"a")).caseCount, 3U);
    EXPECT_EQ(tree.GetNode(findNode(tree, L"CA")).caseCount, 2U);
    EXPECT_EQ(tree.GetCaseCount(), 4U);
}

TEST(LuTestSuiteTree, NumbersCasesPerClassInSortedOrder)
{
    const LuTestSuiteTree tree = build({makeTest(L"/d/CB/", {L"3", L"1", L"2"}), makeTest(L"/d/CA/", {L"5", L"4"})});

    std::vector<std::pair<std::wstring, std::uint32_t>> cases;
    for (std::uint32_t index = 0; index < tree.GetCaseCount(); ++index)
    {
        cases.emplace_back(tree.GetCase(index).name, tree.GetCase(index).testCase);
    }
    using Case = std::pair<std::wstring, std::uint32_t>;
    EXPECT_THAT(cases, ElementsAre(Case(L"4", 1), Case(L"5", 0), Case(L"1", 1), Case(L"2", 2), Case(L"3", 0)));
    EXPECT_EQ(tree.GetNode(findNode(tree, L"CA")).firstCase, 0U);
    EXPECT_EQ(tree.GetNode(findNode(tree, L"CB")).firstCase, 2U);
    EXPECT_EQ(tree.GetCase(2).node, findNode(tree, L"CB"));
}

TEST(LuTestSuiteTree, CopiesTheKindOfCases)
{
    LuTestSuite::SUnitTest test = makeTest(L"/d/CA/", {L"b.txt", L"a"});
    test.cases[0].dataSetFile = test.dataDirectory + L"b.txt";
    const LuTestSuiteTree tree = build({test});

    EXPECT_EQ(tree.GetCase(0).kind, 0U);
    EXPECT_EQ(tree.GetCase(1).kind, 1U);
}

TEST(LuTestSuiteTree, KeepsTheOrderOfCasesWithOneName)
{
    const LuTestSuiteTree tree = build({makeTest(L"/d/CA/", {L"x", L"x"})});

    EXPECT_EQ(tree.GetCase(0).testCase, 0U);
    EXPECT_EQ(tree.GetCase(1).testCase, 1U);
}

TEST(LuTestSuiteTree, ThrowsWhenTwoUnitTestsShareAPath)
{
    EXPECT_EQ(getThrowingFunction({makeTest(L"/d/CA/", {L"x"}), makeTest(L"/d/CA/", {L"y"})}),
              L"LuTestSuiteTree::Build::<lambda>");
}

/// "B" is a case of the first unit test, after a doubled separator, and a folder of the second one.
TEST(LuTestSuiteTree, ThrowsWhenAPathIsTooShortForItsFolder)
{
    EXPECT_EQ(getThrowingFunction({makeTest(L"/d/CA//", {L"B"}), makeTest(L"/d/CA/B/CX/", {L"x"})}),
              L"LuTestSuiteTree::buildRecursive");
}

TEST(LuTestSuiteTree, ThrowsWhenASecondUnitTestOfAPathHasMoreCases)
{
    EXPECT_EQ(getThrowingFunction({makeTest(L"/d/CA/", {L"a"}), makeTest(L"/d/CA/", {L"x", L"y"})}),
              L"LuTestSuiteTree::Build::<lambda>");
}

TEST(LuTestSuiteTree, ThrowsWhenAUnitTestLiesInTheFolderOfAnother)
{
    EXPECT_EQ(getThrowingFunction(
                  {makeTest(L"/d/CA/", {L"x"}), makeTest(L"/d/CA/a/CB/", {L"y"}), makeTest(L"/d/CC/", {L"z"})}),
              L"LuTestSuiteTree::Build");
}

TEST(LuTestSuiteTree, IsReplacedByTheNextBuild)
{
    LuTestSuiteTree tree = build({makeTest(L"/d/CA/", {L"x"}), makeTest(L"/d/CB/", {L"y"})});

    tree.Build({makeTest(L"/e/CC/", {L"z"})});

    EXPECT_EQ(print(tree), L"CC{z}");
}

TEST(LuTestSuiteTree, CanBeCopiedAndMoved)
{
    LuTestSuiteTree tree = build({makeTest(L"/d/CA/", {L"x"}), makeTest(L"/d/CB/", {L"y"})});
    const LuTestSuiteTree copy = tree;
    const LuTestSuiteTree moved = std::move(tree);

    EXPECT_EQ(print(copy), L"d(CA{x} CB{y})");
    EXPECT_EQ(print(moved), L"d(CA{x} CB{y})");
}

} // namespace

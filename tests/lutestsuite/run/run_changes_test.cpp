// Data directories that cases change while the run is under way.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/runtest.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SCaseInfo;

class RunChanges : public RunTest
{
protected:
    /// Discovery finds "a.txt", "b.txt" and "c.txt" in the folder of the class. The first case then removes the file of
    /// the second one.
    void ExpectThatEachCaseMeetsItsOwnFile(const std::wstring& className, bool hasIndex, bool isExternal,
                                           bool isParallel)
    {
        for (const wchar_t* const name : {L"/a.txt", L"/b.txt", L"/c.txt"})
        {
            m_folder.WriteFile(className + name, "");
        }
        LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
        setup.dlls = {L"changingmodels"};
        setup.params.external = isExternal;
        setup.params.parallel = isParallel;
        setup.params.workerThreads = 1;
        const std::vector<SCaseInfo> cases = Run(setup).cases;

        ASSERT_EQ(cases.size(), 3U);
        EXPECT_EQ(cases[0].result, ECaseRunResult::Ok);
        EXPECT_EQ(cases[0].messages, (hasIndex ? L"\t\tINFO:  0\n" : L"") + std::wstring(L"\t\tINFO:  a.txt\n"));
        EXPECT_EQ(cases[1].result, ECaseRunResult::NoMatchingCase);
        EXPECT_EQ(cases[1].messages, L"");
        EXPECT_EQ(cases[2].result, ECaseRunResult::Ok);
        EXPECT_EQ(cases[2].messages, (hasIndex ? L"\t\tINFO:  1\n" : L"") + std::wstring(L"\t\tINFO:  c.txt\n"));
    }

    ScopedFolder m_folder;
};

TEST_F(RunChanges, EachCaseReadsItsOwnFile)
{
    ExpectThatEachCaseMeetsItsOwnFile(L"CChangingModel", false, false, false);
}

TEST_F(RunChanges, EachCaseOnAWorkerReadsItsOwnFile)
{
    ExpectThatEachCaseMeetsItsOwnFile(L"CChangingModel", false, false, true);
}

TEST_F(RunChanges, EachCaseInAChildReadsItsOwnFile)
{
    ExpectThatEachCaseMeetsItsOwnFile(L"CChangingModel", false, true, false);
}

TEST_F(RunChanges, EachCaseFoundByIndexReadsItsOwnFile)
{
    ExpectThatEachCaseMeetsItsOwnFile(L"CChangingIndexModel", true, false, false);
}

TEST_F(RunChanges, EachCaseFoundByIndexInAChildReadsItsOwnFile)
{
    ExpectThatEachCaseMeetsItsOwnFile(L"CChangingIndexModel", true, true, false);
}

TEST_F(RunChanges, ListingsReadDuringACaseDoNotCountAsItsGrowth)
{
    m_folder.WriteFile(L"CChangingIndexModel/a.txt", "");
    m_folder.WriteFile(L"CChangingIndexModel/c.txt", "");
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
    setup.dlls = {L"changingmodels"};
    setup.params.trackHeap = true;
    setup.params.external = true;
    const std::vector<SCaseInfo> cases = Run(setup).cases;

    ASSERT_EQ(cases.size(), 2U);
    EXPECT_EQ(cases[0].memoryGrowth, 0U);
    EXPECT_EQ(cases[1].memoryGrowth, 0U);
}

} // namespace

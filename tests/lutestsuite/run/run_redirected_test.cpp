// Unit tests that read another folder than the given one.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbpath.h"
#include "base/luunittest.h"
#include "tests/support/runtest.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// Each case reports the number of cases and the name of the first one.
class CRedirectedModel : public LuUnitTest
{
    LB_RTTI(CRedirectedModel)

    void SetDataDirectory(const std::wstring& directory) override
    {
        LuUnitTest::SetDataDirectory(LbPath::WithSeparator(directory + L"inner"));
    }
    void InitSubtests() override
    {
        AddFileSubtests(L"*.txt",
                        [this](const std::wstring&) { Info(L"%u %s", GetSubtestCount(), GetSubtestName(0)); });
    }
};
LB_RTTI_CLASS(CRedirectedModel, LuUnitTest)

class RunRedirected : public RunTest
{
};

TEST_F(RunRedirected, ListsTheCasesOfTheFolderThatItReads)
{
    const ScopedFolder folder;
    for (const wchar_t* const name : {L"inner/a.txt", L"inner/b.txt", L"inner/inner/c.txt"})
    {
        folder.WriteFile(std::wstring(L"CRedirectedModel/") + name, "");
    }
    LuTestSuite::SUnitTest unitTest = MakeUnitTest(L"CRedirectedModel", {L"a.txt", L"b.txt"});
    unitTest.dataDirectory = LbPath::WithSeparator(folder.GetPathOf(L"CRedirectedModel"));
    const std::vector<LuTestSuiteRun::SCaseInfo> cases = Run(MakeSetup({unitTest})).cases;

    ASSERT_EQ(cases.size(), 2U);
    EXPECT_EQ(cases[0].messages, L"\t\tINFO:  2 a.txt\n");
    EXPECT_EQ(cases[1].messages, L"\t\tINFO:  2 a.txt\n");
}

} // namespace

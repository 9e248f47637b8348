#include "base/iunittestrecreate.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/luunittest.h"
#include "calls.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuitetree.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;

std::uint32_t s_target = 0;

/// A class of the program itself.
class COutsideRecreate : public LuUnitTest, public IUnitTestRecreate
{
    LB_RTTI(COutsideRecreate)

    void InitSubtests() override
    {
        AddSubtest(L"data", [] {});
    }
    bool IsRecreatable(std::uint32_t /*subtest*/) const override { return true; }
    void Recreate(std::uint32_t /*subtest*/) override { s_target = GetRequest().targetSystem; }
};
LB_RTTI_CLASS(COutsideRecreate, LuUnitTest)

std::vector<LuTestSuite::SUnitTest> makeUnitTests(const SPlaces& places)
{
    LuTestSuite::SUnitTest unitTest;
    unitTest.className = L"COutsideRecreate";
    unitTest.dataDirectory = places.data + L"COutsideRecreate" + LbPath::c_Separator;
    unitTest.cases.push_back({{}, L"data", {}});
    return {unitTest};
}

void callSetup()
{
    LuTestSuiteSetup setup;
    setup.dataDir = L"a";
    LuTestSuiteSetup copy = setup;
    LuTestSuiteSetup moved = std::move(copy);
    Expect(moved.dataDir == L"a", "LuTestSuiteSetup copied and moved");
    copy = setup;
    setup = std::move(moved);
    Expect(setup.dataDir == copy.dataDir, "LuTestSuiteSetup assigned");
}

void callTree(const std::vector<LuTestSuite::SUnitTest>& unitTests)
{
    LuTestSuiteTree tree;
    tree.Build(unitTests);
    Expect(tree.GetCaseCount() == 1 && tree.GetCase(0).name == L"data", "cases of LuTestSuiteTree");
    const LuTestSuiteTree::SNode& node = tree.GetNode(tree.GetCase(0).node);
    Expect(node.kind == LuTestSuiteTree::eK_Class && node.unitTest == 0, "nodes of LuTestSuiteTree");
    Expect(tree.GetNodeCount() != 0 && tree.GetNode(0).parent == LuTestSuiteTree::sc_uiInvalid, "its root");
}

/// Runs cases in a child process. The child is the deployed host, which must load the module itself.
void callExternalRun(LuTestSuiteEnvironment& environment, const SPlaces& places)
{
    LuTestSuiteSetup setup;
    setup.dataDir = places.data;
    setup.includes = {L"/COutsideTest:"};
    setup.dlls = {L"OutsideTests"};
    setup.params.external = true;
    const LuTestSuiteRun::SRunResult result = LuTestSuiteRun::Run(setup, environment);
    Expect(result.stats.total.GetCount(ECaseRunResult::Ok) == 2, "LuTestSuiteRun::Run in child processes");
    Expect(!result.cases.empty() && result.cases[0].processIndex >= 0, "the child process of a case");
    bool isRefused = false;
    try
    {
        // Fails, because the setup does not name the shared objects.
        LuTestSuiteRun::RunExternalExecution(LuTestSuiteSetup(), environment);
    }
    catch (const LbException&)
    {
        isRefused = true;
    }
    Expect(isRefused, "LuTestSuiteRun::RunExternalExecution");
}

} // namespace

void CallEnvironment(LuTestSuiteEnvironment& environment)
{
    Expect(!LuTestSuiteEnvironment::GetTestDLLs().empty(), "LuTestSuiteEnvironment::GetTestDLLs");
    environment.LoadTestDLLs();
    environment.LoadDLL(L"OutsideTests", false);
    Expect(LbRTTI::Find(L"COutsideTest") != nullptr, "LuTestSuiteEnvironment::LoadDLL");
    LuTestSuiteEnvironment::PreallocateStaticData();
    const std::wstring before = LbOs::GetWorkingDirectory();
    environment.SetExecutableDirectoryAsWorkingDirectory();
    Expect(LbPath::WithSeparator(LbOs::GetWorkingDirectory()) ==
               LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable),
           "LuTestSuiteEnvironment::SetExecutableDirectoryAsWorkingDirectory");
    environment.RestoreWorkingDirectory();
    Expect(LbOs::GetWorkingDirectory() == before, "LuTestSuiteEnvironment::RestoreWorkingDirectory");
}

void CallRuns(LuTestSuiteEnvironment& environment, const SPlaces& places)
{
    callSetup();
    const std::vector<LuTestSuite::SUnitTest> unitTests = makeUnitTests(places);
    callTree(unitTests);
    LuTestSuiteSetup setup;
    setup.unitTests = unitTests;
    const LuTestSuiteRun::SRunResult result = LuTestSuiteRun::Run(setup, environment);
    Expect(result.stats.total.GetCount(ECaseRunResult::Ok) == 1, "LuTestSuiteRun::Run");
    callExternalRun(environment, places);
    constexpr std::uint32_t c_Target = 7;
    std::size_t finished = 0;
    LuTestSuiteRun::Recreate(environment, unitTests, LuTestSuiteRun::ETargetSystem(c_Target), true,
                             {[] { return false; }, [&finished](ECaseRunResult) { ++finished; }});
    Expect(s_target == c_Target && finished == 1, "LuTestSuiteRun::Recreate");
}

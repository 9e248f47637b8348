/// Shared by tests of cases in child processes.
#pragma once

#include <string>
#include <vector>

#include "tests/modules/outcomes.h"
#include "tests/support/runtest.h"

class ExternalRunTest : public RunTest
{
protected:
    static LuTestSuiteSetup MakeExternal(std::vector<LuTestSuite::SUnitTest> unitTests)
    {
        LuTestSuiteSetup setup = MakeSetup(std::move(unitTests));
        setup.dlls.emplace_back(models::c_CrashModule);
        setup.params.external = true;
        return setup;
    }

    static LuTestSuiteSetup MakeCrash(const std::vector<std::wstring>& caseNames)
    {
        return MakeExternal({MakeUnitTest(L"CCrashModel", caseNames)});
    }
};

#include "testing/lutestsuite/lutestsuitesetup.h"

#include "testing/lutestsuite/settings/setupdefaults.h"

bool LuTestSuite::HasDefaultCallbacks(const LuTestSuiteSetup& setup)
{
    return setup.checkCallback.target<SNeverCancel>() != nullptr &&
           setup.resultCallback.target<SIgnoreResult>() != nullptr;
}

LuTestSuiteSetup::LuTestSuiteSetup()
    : checkCallback(LuTestSuite::SNeverCancel()), resultCallback(LuTestSuite::SIgnoreResult())
{
}

LuTestSuiteSetup::LuTestSuiteSetup(const LuTestSuiteSetup& other) = default;

LuTestSuiteSetup::LuTestSuiteSetup(LuTestSuiteSetup&& other) noexcept = default;

LuTestSuiteSetup& LuTestSuiteSetup::operator=(const LuTestSuiteSetup& other) = default;

LuTestSuiteSetup& LuTestSuiteSetup::operator=(LuTestSuiteSetup&& other) noexcept = default;

LuTestSuiteSetup::~LuTestSuiteSetup() = default;

#include "testing/lutestsuite/lutestsuitesetup.h"

LuTestSuiteSetup::LuTestSuiteSetup()
    : checkCallback([] { return false; }), resultCallback([](LuTestSuiteRun::ECaseRunResult) {})
{
}

LuTestSuiteSetup::LuTestSuiteSetup(const LuTestSuiteSetup& other) = default;

LuTestSuiteSetup::LuTestSuiteSetup(LuTestSuiteSetup&& other) noexcept = default;

LuTestSuiteSetup& LuTestSuiteSetup::operator=(const LuTestSuiteSetup& other) = default;

LuTestSuiteSetup& LuTestSuiteSetup::operator=(LuTestSuiteSetup&& other) noexcept = default;

LuTestSuiteSetup::~LuTestSuiteSetup() = default;

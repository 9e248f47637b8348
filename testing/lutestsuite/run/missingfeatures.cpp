#include "testing/lutestsuite/run/missingfeatures.h"

#include <algorithm>

#include "testing/lutestsuite/utils/parameters.h"
#include "testing/lutestsuite/utils/warning.h"

namespace LuTestSuiteRun
{

namespace
{

using UnitTests = std::vector<LuTestSuite::SUnitTest>;

struct SMissingFeature
{
    const wchar_t* text;
    bool (*isRequested)(const LuTestSuiteSetup& setup);
};

constexpr SMissingFeature c_MissingFeatures[] = {
    {L"Parallele Ausführung ist in dieser Version nicht enthalten, alle Testfälle laufen nacheinander",
     [](const LuTestSuiteSetup& setup) { return setup.params.parallel; }},
};

/// By the command line, or by a case's description.
bool requestsExternal(const LuTestSuiteSetup& setup, const UnitTests& unitTests)
{
    return setup.params.external || std::ranges::any_of(unitTests, [](const LuTestSuite::SUnitTest& unitTest) {
               return std::ranges::any_of(unitTest.cases, [](const LuTestSuite::STestCase& testCase) {
                   return LuTestSuite::GetFlag(testCase.parameters, L"External") == true;
               });
           });
}

void warn(const wchar_t* text)
{
    LuTestSuite::WriteWarning(L"Warnung: %s.\n", text);
}

} // namespace

void WarnAboutMissingFeatures(const LuTestSuiteSetup& setup, const UnitTests& unitTests)
{
    for (const SMissingFeature& feature : c_MissingFeatures)
    {
        if (feature.isRequested(setup))
        {
            warn(feature.text);
        }
    }
    if (requestsExternal(setup, unitTests))
    {
        warn(L"Externe Ausführung ist in dieser Version nicht enthalten, alle Testfälle laufen im selben Prozess");
    }
}

} // namespace LuTestSuiteRun

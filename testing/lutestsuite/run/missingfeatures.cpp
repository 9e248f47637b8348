#include "testing/lutestsuite/run/missingfeatures.h"

#include <algorithm>

#include "testing/lutestsuite/lutestsuiteout.h"

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
    {L"Reports werden in dieser Version nicht geschrieben",
     [](const LuTestSuiteSetup& setup) {
         return !setup.xmlReport.empty() || !setup.htmlReport.empty() || setup.autoXml || setup.autoHtml;
     }},
};

bool isTrue(const LuTestSuite::STestCase& testCase, const wchar_t* name)
{
    const auto parameter = testCase.parameters.find(name);
    return parameter != testCase.parameters.end() && parameter->second.ToBool().value_or(false);
}

/// By the command line, or by a case's description.
bool requestsExternal(const LuTestSuiteSetup& setup, const UnitTests& unitTests)
{
    return setup.params.external || std::ranges::any_of(unitTests, [](const LuTestSuite::SUnitTest& unitTest) {
               return std::ranges::any_of(unitTest.cases, [](const LuTestSuite::STestCase& testCase) {
                   return isTrue(testCase, L"External");
               });
           });
}

void warn(const wchar_t* text)
{
    LuTestSuiteOut::Write(L"Warnung: %s.\n", text).Bold().Color(LuColor::c_GOLDENROD);
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

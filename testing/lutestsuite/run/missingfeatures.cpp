#include "testing/lutestsuite/run/missingfeatures.h"

#include "testing/lutestsuite/utils/warning.h"

namespace LuTestSuiteRun
{

namespace
{

struct SMissingFeature
{
    const wchar_t* text;
    bool (*isRequested)(const LuTestSuiteSetup& setup);
};

constexpr SMissingFeature c_MissingFeatures[] = {
    {L"Reports werden in dieser Version nicht geschrieben",
     [](const LuTestSuiteSetup& setup) {
         return !setup.xmlReport.empty() || !setup.htmlReport.empty() || setup.autoXml || setup.autoHtml;
     }},
};

void warn(const wchar_t* text)
{
    LuTestSuite::WriteWarning(L"Warnung: %s.\n", text);
}

} // namespace

void WarnAboutMissingFeatures(const LuTestSuiteSetup& setup)
{
    for (const SMissingFeature& feature : c_MissingFeatures)
    {
        if (feature.isRequested(setup))
        {
            warn(feature.text);
        }
    }
}

} // namespace LuTestSuiteRun

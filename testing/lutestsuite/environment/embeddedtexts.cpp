/// The texts that the build embeds in the library.

#include "base/os/resources.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

/// Its address identifies this module.
const char s_PlaceInThisModule = 0;

} // namespace

std::string LuTestSuiteUtils::LoadResourceToString(const std::wstring& name, const std::wstring& type)
{
    return std::string(LbOs::FindEmbeddedResource(&s_PlaceInThisModule, name, type));
}

std::string LuTestSuiteUtils::GetDefaultStylesheet()
{
    return LoadResourceToString(L"IDR_HTML_REPORT_CSS", L"CSSFILE");
}

std::string LuTestSuiteUtils::GetJavascriptSource()
{
    return LoadResourceToString(L"IDR_HTML_REPORT_JS", L"JSFILE");
}

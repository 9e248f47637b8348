/// What the library knows about its own build, and about the modules of the process.

#include "testing/lutestsuite/utils/buildinformation.h"
#include "base/lbpath.h"
#include "base/lbrtti.h"
#include "base/os/modules.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

std::wstring LuTestSuiteUtils::GetBuildConfiguration()
{
    return std::wstring(LuTestSuite::c_BuildConfigurationName) + L" x64";
}

LuTestSuiteUtils::EPlatform LuTestSuiteUtils::GetPlatform()
{
    return eP_x64;
}

std::wstring LuTestSuiteUtils::GetModuleName(const LbRTTI& type)
{
    return LbPath::GetLastComponent(LbOs::GetModulePathOf(&type));
}

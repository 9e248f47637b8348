/// Information about the library's build and about the modules of the process.

#include "testing/lutestsuite/environment/buildinformation.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lbrtti.h"
#include "base/os/modules.h"
#include "testing/lutestsuite/environment/buildrecord.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

std::wstring LuTestSuiteUtils::GetBuildConfiguration()
{
    return std::wstring(LuTestSuite::c_BuildConfigurationName) + L" x64";
}

LuTestSuiteUtils::EPlatform LuTestSuiteUtils::GetPlatform()
{
    return eP_x64;
}

std::unique_ptr<LuTestSuiteUtils::SSvnInfo> LuTestSuiteUtils::GetSvnInfo()
{
    return LuTestSuite::ReadSvnRecord(LoadResourceToString(L"IDR_SVNINFO", L"SVNINFOFILE"));
}

std::unique_ptr<LuTestSuiteUtils::SPscmInfo> LuTestSuiteUtils::GetPscmInfo()
{
    return LuTestSuite::FindPscmRecord(LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable),
                                       LoadResourceToString(L"IDR_PSCMINFO", L"PSCMINFOFILE"));
}

std::wstring LuTestSuiteUtils::GetModuleName(const LbRTTI& type)
{
    std::wstring path = LbOs::GetModulePathOf(&type);
    if (path.empty() && type.GetFacts().type != nullptr)
    {
        // The type record was created at run time, so no module contains it.
        path = LbOs::GetModulePathOf(type.GetFacts().type);
    }
    return LbPath::GetLastComponent(path);
}

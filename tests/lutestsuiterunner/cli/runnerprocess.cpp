#include "tests/lutestsuiterunner/cli/runnerprocess.h"

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/os/platform.h"
#include "tests/support/places.h"

SHostRun RunRunner(const std::vector<std::wstring>& arguments, SHostOptions options)
{
    options.program = L"" LUTESTSUITE_RUNNER;
    return RunHost(arguments, options);
}

std::string DescribeMissingModule(const std::wstring& name)
{
    const std::wstring path = LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable) + name + LbOs::c_ModuleSuffix;
    return LbEncoding::ToUtf8(L"Das Modul '" + name + L"' fehlt: '" + path + L"' gibt es nicht");
}

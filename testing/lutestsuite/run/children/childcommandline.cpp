#include "testing/lutestsuite/run/children/childcommandline.h"

#include "base/lbcommandline.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/os/platform.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace LuTestSuiteRun
{

std::wstring GetHostName()
{
    const bool isDebug = LuTestSuiteUtils::GetBuildConfiguration().starts_with(L"Debug");
    return LbFormat(L"LuTestSuiteCLI%s%s", isDebug ? L"D" : L"", LbOs::c_ExecutableSuffix);
}

std::wstring GetChildCommandLine(const SChildSettings& settings, const std::wstring& memoryId,
                                 const std::wstring& requestEventId, const std::wstring& responseEventId)
{
    // A run of the host's own list of unit tests may have no data directory. The command line of the child requires a
    // directory, but the child does not search it.
    const std::wstring dataDirectory = settings.dataDirectory.empty()
                                           ? LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable)
                                           : settings.dataDirectory;
    std::wstring line =
        LbFormat(L"%s -d %s -x --memory-id %s --request-event-id %s --response-event-id %s", GetHostName(),
                 LbCommandLine::Quote(dataDirectory), memoryId, requestEventId, responseEventId);
    if (!settings.assertDialog)
    {
        line += L" --no-assert-dialog";
    }
    for (const std::wstring& name : settings.dlls)
    {
        line += L" --dll " + LbCommandLine::Quote(name);
    }
    return line;
}

} // namespace LuTestSuiteRun

/// Other processes: starting one with a time limit, ending processes by name, querying the parent.

#include "base/os/processes.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "base/lbcommandline.h"
#include "base/lbfilesystem.h"
#include "base/os/childprocess.h"
#include "base/os/process.h"
#include "testing/lutestsuite/environment/utilsfailure.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/output/warning.h"

namespace
{

/// Quotes the path of a file if it contains blanks or quotation marks. Returns other texts unchanged, because they may
/// already contain arguments.
std::wstring toWord(const std::wstring& executable)
{
    const bool isOneWord = LbCommandLine::Split(executable) == std::vector{executable};
    return !isOneWord && LbFileSystem::IsFile(executable) ? LbCommandLine::Quote(executable) : executable;
}

} // namespace

void LuTestSuiteUtils::ExecuteWithTimeout(const std::wstring& executable, const std::wstring& arguments,
                                          const std::wstring& workingDir, std::uint32_t timeoutSec)
{
    constexpr std::uint32_t c_Second = 1000;
    LbOs::SChildOptions options;
    options.commandLine = toWord(executable) + L" " + arguments;
    options.workingDirectory = workingDir;
    const std::unique_ptr<LbOs::CChildProcess> child = LbOs::CChildProcess::Start(options);
    if (child == nullptr)
    {
        LuTestSuite::WriteWarning(L"Warnung: Prozess %s konnte nicht gestartet werden:\n", executable);
        LuTestSuiteOut::Write(L"         Argumente: %s\n", arguments);
        LuTestSuiteOut::Write(L"         Working Directory: %s\n", workingDir);
        return;
    }
    if (child->Wait(timeoutSec * c_Second))
    {
        // Lets the descendants of the process run on, because the process may have left them running intentionally.
        child->Detach();
        return;
    }
    child->Terminate();
    LuTestSuite::WriteWarning(L"Warnung: Prozess %s nach %d Sekunden abgebrochen.\n", GetFileNameOnly(executable),
                              timeoutSec);
}

void LuTestSuiteUtils::KillAllByName(const std::wstring& exeName)
{
    std::vector<LbOs::SProcess> processes = LbOs::ListProcesses();
    if (processes.empty())
    {
        LuTestSuite::WriteWarning(L"Warnung: Prozess Snapshot konnte nicht erstellt werden.\n");
        return;
    }
    // A process whose name is unknown has an empty name here, and must not match.
    std::erase_if(processes, [&exeName](const LbOs::SProcess& process) {
        return process.executableName.empty() || process.executableName != exeName;
    });
    for (const LbOs::SProcess& process : processes)
    {
        LuTestSuiteOut::Write(L"Aktiver Prozess %s gefunden. Wird terminiert.\n", process.executableName);
    }
    std::ranges::for_each(processes, LbOs::KillProcess);
}

bool LuTestSuiteUtils::CheckForSameParentProcess()
{
    const std::optional<unsigned long> parent = LbOs::GetParentProcessId();
    if (!parent)
    {
        return false;
    }
    const std::wstring ownName = LbOs::GetProcessExecutableName(LbOs::GetProcessId());
    const std::wstring parentName = LbOs::GetProcessExecutableName(*parent);
    if (ownName.empty() || parentName.empty())
    {
        LuTestSuite::ThrowUtilsFailure(L"LuTestSuiteUtils::CheckForSameParentProcess");
    }
    return ownName == parentName;
}

void LuTestSuiteUtils::EnterDebugBreakpoint()
{
    while (true)
    {
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
}

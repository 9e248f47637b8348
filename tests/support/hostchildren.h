/// The current process's children that run the host.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "base/os/platform.h"
#include "base/os/processes.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/os/testaids.h"

/// Includes children that have just been started.
inline std::vector<LbOs::SProcess> ListHostChildren()
{
    const bool isDebug = LuTestSuiteUtils::GetBuildConfiguration().starts_with(L"Debug");
    const std::wstring host = std::wstring(isDebug ? L"LuTestSuiteCLID" : L"LuTestSuiteCLI") + LbOs::c_ExecutableSuffix;
    const std::vector<unsigned long> children = LbOs::ListChildren();
    std::vector<LbOs::SProcess> processes = LbOs::ListProcesses();
    std::erase_if(processes, [&](const LbOs::SProcess& process) {
        return process.executableName != host || std::ranges::find(children, process.id) == children.end();
    });
    return processes;
}

inline std::ptrdiff_t CountHostChildren()
{
    return std::ssize(ListHostChildren());
}

/// Kills all host children and returns when they have ended.
inline void KillHostChildren()
{
    for (const LbOs::SProcess& process : ListHostChildren())
    {
        LbOs::KillProcess(process);
        LbOs::WaitForEnd(process.id);
    }
}

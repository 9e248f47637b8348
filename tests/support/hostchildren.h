/// The children of the present process that run the host.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "base/os/platform.h"
#include "base/os/processes.h"
#include "base/os/testaids.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

/// Also of those that have just been started.
inline std::ptrdiff_t CountHostChildren()
{
    const bool isDebug = LuTestSuiteUtils::GetBuildConfiguration().starts_with(L"Debug");
    const std::wstring host = std::wstring(isDebug ? L"LuTestSuiteCLID" : L"LuTestSuiteCLI") + LbOs::c_ExecutableSuffix;
    const std::vector<unsigned long> children = LbOs::ListChildren();
    return std::ranges::count_if(LbOs::ListProcesses(), [&](const LbOs::SProcess& process) {
        return process.executableName == host && std::ranges::find(children, process.number) != children.end();
    });
}

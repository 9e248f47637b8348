/// The command line with which a run starts a host as its child process.
#pragma once

#include <string>

#include "testing/lutestsuite/run/children/childsettings.h"

namespace LuTestSuiteRun
{

/// File name of the host of this build ("LuTestSuiteCLI" or "LuTestSuiteCLID" with the platform's suffix). The file is
/// in the folder of the running executable, and usually is that executable.
std::wstring GetHostName();

/// The command line of a child that uses the shared objects with these names.
std::wstring GetChildCommandLine(const SChildSettings& settings, const std::wstring& memoryId,
                                 const std::wstring& requestEventId, const std::wstring& responseEventId);

} // namespace LuTestSuiteRun

/// How a run starts its host again as a child process.
#pragma once

#include <string>

#include "testing/lutestsuite/run/children/childsettings.h"

namespace LuTestSuiteRun
{

/// This build's host, beside the running executable and usually the same.
std::wstring GetHostName();

/// The command line of a child that serves through objects of these names.
std::wstring GetChildCommandLine(const SChildSettings& settings, const std::wstring& memoryId,
                                 const std::wstring& requestEventId, const std::wstring& responseEventId);

} // namespace LuTestSuiteRun

/// The configuration of archive runs, and how one is carried out.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuiterun.h"

struct LuTestSuiteSetup;

namespace LuTestSuite
{

/// One entry of a configuration.
struct SArchiveRun
{
    std::wstring name;
    std::wstring binaryDir; ///< folder of the host
    std::wstring config;    ///< "Debug" or "Release"
    std::wstring platform;  ///< "Win32" or "x64"
    std::wstring dataDir;
    std::wstring outDir; ///< the folder whose "Archive" takes the reports
    LuTestSuiteRun::SParams params;
    std::vector<std::wstring> dlls; ///< test modules that the call names; the configuration names none
};

/// Files of the child process, which are moved to the archive.
struct STemporaryReports
{
    std::wstring xml;
    std::wstring html;
};

/// All entries of a file, in its order; what an entry does not say comes from the setup. Throws a German message as
/// std::wstring when the file is missing or no such configuration, or an entry is for an unknown build.
std::vector<SArchiveRun> ReadArchiveRuns(const std::wstring& path, const LuTestSuiteSetup& setup);

/// The child's arguments as one text.
std::wstring GetArchiveRunArguments(const SArchiveRun& run, const STemporaryReports& reports);

/// As long as the child process of an entry may take.
inline constexpr std::uint32_t c_ArchiveTimeOutSec = 8 * 60 * 60;

/// Carries out one entry; the child process may take `timeOutSec` seconds. Throws a German message as std::wstring when
/// the entry names what does not exist.
void ExecuteArchiveRun(SArchiveRun run, std::uint32_t timeOutSec = c_ArchiveTimeOutSec);

} // namespace LuTestSuite

/// The configuration of archive runs and the execution of its entries.
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
    std::wstring outDir; ///< reports are stored in "Archive" below this folder
    LuTestSuiteRun::SParams params;
    std::wstring callArguments; ///< options for modules and selection, from the command line; entries cannot have them
};

/// Report files that the child process writes; afterwards they are moved to the archive.
struct STemporaryReports
{
    std::wstring xml;
    std::wstring html;
};

/// All entries of a file, in file order; the setup provides values that an entry omits. Throws a German message as
/// std::wstring if the file is missing or no such configuration, or if an entry has an unknown `config` or `platform`.
std::vector<SArchiveRun> ReadArchiveRuns(const std::wstring& path, const LuTestSuiteSetup& setup);

/// The child's arguments as one text.
std::wstring GetArchiveRunArguments(const SArchiveRun& run, const STemporaryReports& reports);

/// The time limit of the child process of an entry.
inline constexpr std::uint32_t c_ArchiveTimeOutSec = 8 * 60 * 60;

/// Executes one entry; the child process may take `timeOutSec` seconds. Throws a German message as std::wstring if a
/// file or directory that the entry names does not exist.
void ExecuteArchiveRun(SArchiveRun run, std::uint32_t timeOutSec = c_ArchiveTimeOutSec);

} // namespace LuTestSuite

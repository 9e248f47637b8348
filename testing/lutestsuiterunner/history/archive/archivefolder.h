/// The runs below an archive's folder.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuiterunner/history/archive/archive.h"

namespace Runner::History
{

inline constexpr const wchar_t* c_IndexName = L"LuTestSuiteHistory.index";

/// A run that cannot be read. It may be the newest run of each configuration whose runs have no newer files.
struct SUnreadableRun
{
    std::wstring name;
    std::vector<std::wstring> configurations;
};

struct SArchiveContent
{
    std::vector<SCaseName> names; ///< sorted
    std::vector<SRun> runs;       ///< in the order of their begin
    std::size_t readCount = 0;    ///< number of them that were read from their files
    std::string digest;           ///< the same for the same content; empty if there is no index
    /// Those that may be the newest run of a configuration.
    std::vector<SUnreadableRun> unreadable;
};

/// Reads the runs of a folder: XML reports in it and in its folder "Archive", and the sub-folders that hold the journal
/// or the report of a run. A run that cannot be read is left out, and a line is printed. Runs that have not changed are
/// taken from the index in the folder, which is updated; if it cannot be written, a line is printed.
/// Throws LbException with a German message if there is no such folder.
SArchiveContent ReadArchive(const std::wstring& directory);

} // namespace Runner::History

/// The files of runs below an archive's folder.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuiterunner/history/archive/recordedrun.h"

namespace Runner::History
{

/// A source from which a run can be read.
struct SRunSource
{
    std::wstring name;                                         ///< file or folder, below the archive
    std::vector<std::wstring> files;                           ///< that it consists of, below the archive; sorted
    bool (*read)(const std::wstring& path, SRecordedRun& run); ///< false, after a line of output, on failure
};

/// Sorted by name. `folder` ends in a separator.
std::vector<SRunSource> FindRuns(const std::wstring& folder);

} // namespace Runner::History

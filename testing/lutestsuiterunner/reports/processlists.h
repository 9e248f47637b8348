/// Lists of the cases that ran in one process, for failures that occur only in shared processes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// If more cases than this ran earlier in the process, texts may omit their names and refer to the list.
inline constexpr std::size_t c_MostEarlierCases = 5;

/// The file with the cases of a process, relative to the run's folder, with "/": "output/process-1.txt".
std::wstring GetProcessListName(std::uint32_t process);

/// Writes a list for each process in which a case failed only because the process was shared, if more than
/// `c_MostEarlierCases` cases ran before that case. A list is UTF-8 and has a line per case, in the order in which they
/// ended, so that the cases before a failure are the first lines. `folder` ends in a separator. Throws LbException with
/// a German message.
void WriteProcessLists(const std::wstring& folder, const CRunState& state);

} // namespace Runner

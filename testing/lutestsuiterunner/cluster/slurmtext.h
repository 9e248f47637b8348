/// What Slurm's commands take and say. Pure functions.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "testing/lutestsuiterunner/cluster/engine.h"

namespace Runner
{

/// By shard, the file to which the newest start of its task has printed. The names are
/// "shard-SHARD-SUBMISSION-RESTART.txt", in any order; others are ignored.
std::map<std::uint32_t, std::wstring> FindNewestOutputs(const std::vector<std::wstring>& names);

/// The name of a submission's job, unique among all runs.
std::wstring GetJobName(const std::string& runId, std::uint32_t submission);

/// True for options of sbatch without which the engine does not find its tasks again, or waits for their end: --array,
/// --clusters, --job-name and --wait, also short or abbreviated, and "--", which ends the options.
bool IsOwnOption(const std::wstring& option);

/// One line per task: shard, state, reason, node.
inline constexpr const wchar_t* c_QueueFormat = L"task|%K|%T|%r|%N";

/// Reads lines of that format and ignores others. A task is over unless its state says that it waits or runs. If a
/// shard has several tasks, one that is not over counts.
Tasks ReadQueue(std::string_view output);

} // namespace Runner

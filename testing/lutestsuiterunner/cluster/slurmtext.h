/// Makes arguments for Slurm's commands and reads their output. Pure functions.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "testing/lutestsuiterunner/cluster/engine.h"

namespace Runner
{

/// Returns, by shard, the name of the file with the output of the task's newest start. `names` may have any order.
/// Names other than "shard-SHARD-SUBMISSION-RESTART.txt" are ignored.
std::map<std::uint32_t, std::wstring> FindNewestOutputs(const std::vector<std::wstring>& names);

/// The name of a submission's job, unique among all runs.
std::wstring GetJobName(const std::string& runId, std::uint32_t submission);

/// True for options of sbatch that the user must not set, because the engine would not find its tasks again or would
/// wait for their end: --array, --clusters, --job-name and --wait, also short or abbreviated, and "--", which ends the
/// options.
bool IsOwnOption(const std::wstring& option);

/// The format that makes squeue print one line per task: shard, state, reason, node.
inline constexpr const wchar_t* c_QueueFormat = L"task|%K|%T|%r|%N";

/// Reads lines in c_QueueFormat and ignores others. A task is over unless its state says that it waits or runs. If a
/// shard has several tasks, returns one that is not over if possible.
Tasks ReadQueue(std::string_view output);

} // namespace Runner

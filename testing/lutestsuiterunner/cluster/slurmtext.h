/// What Slurm's commands take and say. Pure functions.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "testing/lutestsuiterunner/cluster/engine.h"

namespace Runner
{

/// The name of a submission's job, unique among all runs.
std::wstring GetJobName(const std::string& runId, std::uint32_t submission);

/// Ascending numbers as the option --array takes them: "1-3,7".
std::wstring FormatArray(const std::vector<std::uint32_t>& shards);

/// One line per task: shard, state, reason, node.
inline constexpr const wchar_t* c_QueueFormat = L"task|%K|%T|%r|%N";

/// Reads lines of that format and ignores others. A task is over unless its state says that it waits or runs. If a
/// shard has several tasks, one that is not over counts.
Tasks ReadQueue(std::string_view output);

} // namespace Runner

/// What proof.json says about the journals of a distributed run.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Runner
{

/// How many records of each journal count. Indexed by shard number - 1, then by journal number - 1.
using RecordCounts = std::vector<std::vector<std::uint64_t>>;

/// The records on which the reports of the run in the folder are based. Empty if the folder has no proof of the plan
/// with this digest, because the run has not ended. Throws LbException with a German message if the file cannot be
/// read or understood. `folder` ends in a separator.
std::optional<RecordCounts> ReadProvenRecords(const std::wstring& folder, const std::string& planDigest);

} // namespace Runner

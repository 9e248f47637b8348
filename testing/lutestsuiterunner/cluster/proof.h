/// proof.json: the data from which a checker confirms that each planned case has exactly one verdict that counts.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuiterunner/cluster/follower.h"
#include "testing/lutestsuiterunner/journal/readparts.h"

namespace Runner
{

/// Writes the file into the run's folder. `state` and `parts` must come from the same read of the journals. Throws
/// LbException with a German message.
void WriteProof(const std::wstring& folder, const CRunState& state, const std::vector<SReadPart>& parts,
                const std::vector<SShardEntry>& shards, const CFollower& follower);

} // namespace Runner

/// proof.json: the data from which a checker confirms that each planned case has exactly one verdict that counts.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuiterunner/cluster/follower.h"
#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// Writes the file into the run's folder. Throws LbException with a German message.
void WriteProof(const std::wstring& folder, const CRunState& state, const std::vector<SShardEntry>& shards,
                const CFollower& follower);

} // namespace Runner

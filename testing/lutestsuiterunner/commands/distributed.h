/// What the commands for distributed runs have in common.
#pragma once

#include <memory>
#include <string>

#include "testing/lutestsuiterunner/cluster/follower.h"
#include "testing/lutestsuiterunner/model/plan.h"
#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

/// A distributed run that a folder holds.
struct SDistributedRun
{
    std::wstring folder; ///< with separator at its end
    SPlan plan;          ///< of the whole
    SSubmitOptions options;
    std::vector<SShardEntry> shards;
    std::unique_ptr<IEngine> engine;
};

/// Throws a German message as std::wstring, or LbException, if the directory holds no distributed run.
SDistributedRun OpenDistributedRun(const std::wstring& directory);

/// Follows the run to its end, or to the cancellation that Ctrl-C asks for; then writes reports and proof, prints the
/// outcome, and returns the exit status.
int FollowToEnd(const SDistributedRun& run);

/// "Teile: 3 von 12 fertig, Fälle: 120/2000, ...".
std::wstring FormatShards(const CFollower& follower);

} // namespace Runner

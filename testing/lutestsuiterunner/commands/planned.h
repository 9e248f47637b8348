/// Runs the shard of a distributed run, in the task of that shard.
#pragma once

#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

/// Runs the remaining cases of the shard whose plan is in the folder `out`: the longest cases first, but cases that
/// were canceled together with an earlier host at the end. Writes its own journal and no reports. Several hosts may do
/// so at once, on any machines. If this machine lacks a folder, the program for child processes, or a class, the
/// journal names it. Returns the exit status. Throws as the commands do.
int RunPlanned(const SRunOptions& call);

} // namespace Runner

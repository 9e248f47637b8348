/// The shard of a distributed run, as its task carries it out.
#pragma once

#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

/// Runs what is left of the shard whose plan the folder `out` holds, longest cases first, into a journal of its own,
/// and makes no reports. Several hosts may do so at once, on any machine. What this machine does not have for it is
/// noted in the journal. Returns the exit status. Throws as the commands do.
int RunPlanned(const SRunOptions& call);

} // namespace Runner

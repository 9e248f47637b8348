/// The progress of a distributed run as text.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/cluster/follower.h"

namespace Runner
{

/// "Teile: 3 von 12 fertig, Fälle: 120/2000, ...".
std::wstring FormatShards(const CFollower& follower);

} // namespace Runner

/// How the present process ends when it crashes.
#pragma once

#include "base/lbexport.h"

namespace LbOs
{

/// From now on a crash ends the process at once and in silence, whoever is to blame: an access violation, a division by
/// zero, an overflow of the calling thread's stack, abort(). No dialog appears, no debugger starts, no memory is
/// dumped; the exit status tells what happened. For processes that run code of which anything must be expected.
LB_API void EndSilentlyOnCrash();

} // namespace LbOs

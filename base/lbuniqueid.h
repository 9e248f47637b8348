/// Unique identifiers.
#pragma once

#include <string>

#include "base/lbexport.h"

namespace LbUniqueId
{

/// A new random identifier (RFC 4122, version 4), 36 lower-case characters, usable as a name of files and system
/// objects. Throws LbException if the system has no random source. Callable from any thread.
LB_API std::wstring Generate();

} // namespace LbUniqueId

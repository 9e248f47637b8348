/// Unique identifiers.
#pragma once

#include <string>

#include "base/lbexport.h"

namespace LbUniqueId
{

/// A fresh random identifier (RFC 4122, version 4), 36 lower-case characters: fit for names of files and system
/// objects. Throws LbException when the system has no random source. Any thread.
LB_API std::wstring Generate();

} // namespace LbUniqueId

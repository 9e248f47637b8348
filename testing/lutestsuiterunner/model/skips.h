/// Cases that have passed without testing anything.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// Returns the reason, which may be empty, if the attempt has passed with an information line that begins with
/// "Übersprungen:". The adapters for other test frameworks write such a line; any other test may write one, too.
std::optional<std::wstring> FindSkipReason(const SAttempt& attempt);

/// The same for a case that has passed at its first attempt.
std::optional<std::wstring> FindSkipReason(const CRunState& state, std::uint32_t caseIndex);

/// How many of SVerdictCounts::passed were skipped.
std::uint32_t CountSkipped(const CRunState& state);

} // namespace Runner

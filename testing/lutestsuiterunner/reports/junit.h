/// The report that build servers read: junit.xml.
#pragma once

#include <cstddef>
#include <string>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// Build servers refuse larger files.
inline constexpr std::size_t c_JunitLimit = 30'000'000;

/// Writes the report: one "testsuite" per unit test, UTF-8. When it would be larger than `limit` bytes, the longest
/// texts are cut with a note; when that does not suffice, cases are left out, those that are not red first. Throws
/// LbException with a German message.
void WriteJunit(const std::wstring& path, const CRunState& state, std::size_t limit = c_JunitLimit);

} // namespace Runner

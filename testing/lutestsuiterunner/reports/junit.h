/// The report that build servers read: junit.xml.
#pragma once

#include <cstddef>
#include <string>

#include "testing/lutestsuiterunner/model/runstate.h"
#include "testing/lutestsuiterunner/reports/opencases.h"

namespace Runner
{

/// Build servers refuse larger files.
inline constexpr std::size_t c_JunitLimit = 30'000'000;

/// Writes the report: one "testsuite" per unit test, UTF-8. If it would be larger than `limit` bytes, cuts the longest
/// texts with a note; if that is not enough, omits cases, first those that are not red. Throws LbException with a
/// German message.
void WriteJunit(const std::wstring& path, const CRunState& state, std::size_t limit = c_JunitLimit,
                const SOpenCases& open = {});

} // namespace Runner

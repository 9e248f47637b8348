/// Why a run is red, apart from its failed cases.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// The flaky cases that make the run red; ascending.
std::vector<std::uint32_t> FindRedFlakyCases(const CRunState& state);

/// The sentence about that number of flaky cases that make the run red.
std::wstring DescribeRedFlakyCases(std::size_t count);

/// German sentences: the cancellation or the missing end of the run, its problems, and its flaky cases. A red run
/// without failed cases has at least one.
std::vector<std::wstring> FindRedReasons(const CRunState& state);

} // namespace Runner

/// Texts in a limited space.
#pragma once

#include <cstddef>
#include <vector>

namespace Runner
{

/// The largest size that longer texts may keep so that all fit into the space together.
std::size_t GetFairShare(std::vector<std::size_t> sizes, std::size_t room);

} // namespace Runner

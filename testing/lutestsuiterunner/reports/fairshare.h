/// Divides limited space among texts.
#pragma once

#include <cstddef>
#include <vector>

namespace Runner
{

/// Returns the size to which longer texts must be cut so that all texts together fit into `room`; the largest
/// std::size_t if they fit uncut.
std::size_t GetFairShare(std::vector<std::size_t> sizes, std::size_t room);

} // namespace Runner

/// Finds changes of counts that are the same in each run until the program changes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace Runner::History
{

struct SCountChange
{
    std::size_t index = 0; ///< of the first value that differs
    std::uint64_t before = 0;
    std::uint64_t after = 0; ///< the newest value
};

/// The newest change of a stable count, if the newest value still differs from the one before the change. A count is
/// stable after at least five equal values in a row. If it has already changed N times after fewer than five equal
/// values, more than N equal values are needed.
std::optional<SCountChange> FindCountChange(std::span<const std::uint64_t> counts);

} // namespace Runner::History

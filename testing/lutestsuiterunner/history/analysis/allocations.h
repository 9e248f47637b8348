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
/// stable if at least five values in a row are equal, and more of them than there were earlier changes after fewer than
/// five equal values.
std::optional<SCountChange> FindCountChange(std::span<const std::uint64_t> counts);

} // namespace Runner::History

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

/// The newest change of a stable count: at least five equal values, followed by another newest value. If the count
/// changed earlier after fewer equal values, there must be more equal values than there were changes like that.
std::optional<SCountChange> FindCountChange(std::span<const std::uint64_t> counts);

} // namespace Runner::History

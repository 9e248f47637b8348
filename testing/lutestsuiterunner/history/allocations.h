/// Changes of numbers that are the same in each run as long as the program is.
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

/// The newest change of a stable count: five equal values at least, and behind them another newest value. Nothing if
/// the count has never been stable, or changed more often than in one of ten runs before.
std::optional<SCountChange> FindCountChange(std::span<const std::uint64_t> counts);

} // namespace Runner::History

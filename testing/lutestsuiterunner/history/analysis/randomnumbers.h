/// Random numbers that are the same on every platform and with every standard library.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Runner::History
{

/// The mixing step of SplitMix64 (Steele, Lea, Flood 2014). Also serves as a hash of a number.
constexpr std::uint64_t MixBits(std::uint64_t value)
{
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31);
}

/// SplitMix64. The distributions of the standard library differ between its implementations.
class CRandomNumbers
{
public:
    explicit CRandomNumbers(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t Next() { return MixBits(m_state += 0x9E3779B97F4A7C15U); }

    /// Each number in [0, count) is equally likely.
    std::size_t Below(std::size_t count)
    {
        const std::uint64_t mask = std::bit_ceil(static_cast<std::uint64_t>(count)) - 1;
        std::uint64_t number = 0;
        do
        {
            number = Next() & mask;
        }
        while (number >= count);
        return static_cast<std::size_t>(number);
    }

private:
    std::uint64_t m_state;
};

/// True for about one in `step` indices, chosen at random. A sample at regular distances would consist of equal cases
/// if, for example, every tenth case is of one kind.
constexpr bool IsInSample(std::uint64_t index, std::uint64_t step)
{
    return MixBits(index + 1) % step == 0;
}

/// Each order is equally likely (Fisher and Yates).
template<typename T>
void Shuffle(std::vector<T>& values, CRandomNumbers& numbers)
{
    for (std::size_t left = values.size(); left > 1; --left)
    {
        std::swap(values[left - 1], values[numbers.Below(left)]);
    }
}

} // namespace Runner::History

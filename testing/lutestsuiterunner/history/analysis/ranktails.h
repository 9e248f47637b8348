/// Exact probabilities of the rank-sum test by Wilcoxon, Mann and Whitney.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace Runner::History
{

/// Base-2 logarithm of a positive number. It uses only additions, multiplications and divisions, whose results are the
/// same on every platform; those of the C library's logarithms are not.
double GetLog2(double number);

/// The natural logarithm of 2.
inline constexpr double c_LogOf2 = 0.69314718055994531;

/// The probability that chance alone makes two groups of runs differ at least as much as they do. Stores computed
/// tables; an object belongs to one thread.
class CRankTails
{
public:
    /// Evidence that the values of the second group are higher, in bits: -log2 of the probability that `inversions` or
    /// fewer of the pairs (one value of each group) are in the wrong order when all orders are equally likely. 0 if
    /// `inversions` is more than half of the pairs.
    double GetBits(std::size_t firstSize, std::size_t secondSize, std::size_t inversions);

    /// The largest number of inversions with at least `bits` of evidence; -1 if there is no such number.
    std::int64_t GetLimit(std::size_t firstSize, std::size_t secondSize, double bits);

private:
    const std::vector<double>& getTable(std::size_t firstSize, std::size_t secondSize);

    std::map<std::pair<std::size_t, std::size_t>, std::vector<double>> m_tables; ///< bits by number of inversions
};

} // namespace Runner::History

#include "testing/lutestsuiterunner/history/analysis/ranktails.h"

#include <algorithm>
#include <cmath>

namespace Runner::History
{

double GetLog2(double number)
{
    constexpr double c_TwoByLogOf2 = 2.8853900817779268;
    constexpr double c_HalfRootOf2 = 0.70710678118654752;
    int exponent = 0;
    double mantissa = std::frexp(number, &exponent); // exact
    if (mantissa < c_HalfRootOf2)
    {
        mantissa *= 2.0;
        --exponent;
    }
    const double ratio = (mantissa - 1.0) / (mantissa + 1.0);
    const double square = ratio * ratio;
    double sum = 0.0;
    for (int power = 27; power >= 1; power -= 2)
    {
        sum = sum * square + 1.0 / power;
    }
    return exponent + c_TwoByLogOf2 * ratio * sum;
}

namespace
{

/// For each number of inversions up to half of the pairs, counts the orders of the two groups with that number. These
/// are the coefficients of the Gaussian binomial polynomial, the product of (1 - q^(larger + i)) / (1 - q^i) for i from
/// 1 to `smaller`. A coefficient depends only on lower ones, so none loses its relative precision.
std::vector<double> countOrders(std::size_t smaller, std::size_t larger)
{
    std::vector<double> counts(smaller * larger / 2 + 1, 0.0);
    counts[0] = 1.0;
    for (std::size_t factor = 1; factor <= smaller; ++factor)
    {
        for (std::size_t index = counts.size(); index-- > larger + factor;)
        {
            counts[index] -= counts[index - larger - factor];
        }
        for (std::size_t index = factor; index < counts.size(); ++index)
        {
            counts[index] += counts[index - factor];
        }
    }
    return counts;
}

/// The base-2 logarithm of the number of all orders.
double getOrderBits(std::size_t smaller, std::size_t larger)
{
    double bits = 0.0;
    for (std::size_t factor = 1; factor <= smaller; ++factor)
    {
        bits += GetLog2(static_cast<double>(larger + factor)) - GetLog2(static_cast<double>(factor));
    }
    return bits;
}

} // namespace

const std::vector<double>& CRankTails::getTable(std::size_t firstSize, std::size_t secondSize)
{
    const auto [smaller, larger] = std::minmax(firstSize, secondSize);
    std::vector<double>& table = m_tables[{smaller, larger}];
    if (table.empty())
    {
        table = countOrders(smaller, larger);
        const double orderBits = getOrderBits(smaller, larger);
        double sum = 0.0;
        for (double& entry : table)
        {
            sum += entry;
            entry = std::max(orderBits - GetLog2(sum), 0.0);
        }
    }
    return table;
}

double CRankTails::GetBits(std::size_t firstSize, std::size_t secondSize, std::size_t inversions)
{
    const std::vector<double>& table = getTable(firstSize, secondSize);
    return inversions < table.size() ? table[inversions] : 0.0;
}

std::int64_t CRankTails::GetLimit(std::size_t firstSize, std::size_t secondSize, double bits)
{
    const std::vector<double>& table = getTable(firstSize, secondSize);
    const auto end = std::ranges::partition_point(table, [bits](double entry) { return entry >= bits; });
    return end - table.begin() - 1;
}

} // namespace Runner::History

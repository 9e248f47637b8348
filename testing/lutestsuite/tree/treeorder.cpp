#include "testing/lutestsuite/tree/treeorder.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

#include "base/lbpath.h"

namespace LuTestSuite
{

namespace
{

std::uint64_t getOrder(wchar_t character)
{
    constexpr std::uint64_t c_BehindPairs = 0x200000;
    const std::uint64_t unit = LbPath::IsSeparator(character) ? L'\\' : static_cast<std::uint32_t>(character);
    const bool isBehindPairs = unit >= 0xDC00 && unit <= 0xFFFF;
    return 2 * (isBehindPairs ? unit + c_BehindPairs : unit) + (character == L'\\' && !LbPath::IsSeparator(character));
}

} // namespace

bool IsBefore(const std::wstring& a, const std::wstring& b)
{
    const auto [atA, atB] = std::ranges::mismatch(a, b);
    return atB != b.end() && (atA == a.end() || getOrder(*atA) < getOrder(*atB));
}

std::vector<std::uint32_t> GetRanks(const std::vector<std::wstring>& paths)
{
    std::vector<std::uint32_t> order(paths.size());
    std::iota(order.begin(), order.end(), 0U);
    std::ranges::sort(order, [&paths](std::uint32_t a, std::uint32_t b) { return IsBefore(paths[a], paths[b]); });
    std::vector<std::uint32_t> ranks(paths.size(), 0);
    for (std::size_t place = 1; place < order.size(); ++place)
    {
        const bool isEqual = paths[order[place]] == paths[order[place - 1]];
        ranks[order[place]] = ranks[order[place - 1]] + (isEqual ? 0U : 1U);
    }
    return ranks;
}

} // namespace LuTestSuite

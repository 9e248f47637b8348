#include "testing/lutestsuiterunner/reports/fairshare.h"

#include <algorithm>
#include <limits>

namespace Runner
{

std::size_t GetFairShare(std::vector<std::size_t> sizes, std::size_t room)
{
    std::ranges::sort(sizes);
    for (std::size_t index = 0; index < sizes.size(); ++index)
    {
        const std::size_t share = room / (sizes.size() - index);
        if (sizes[index] > share)
        {
            return share;
        }
        room -= sizes[index];
    }
    return std::numeric_limits<std::size_t>::max();
}

} // namespace Runner

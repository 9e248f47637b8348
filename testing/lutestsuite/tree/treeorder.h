/// The order of paths and names in a tree of unit tests.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace LuTestSuite
{

/// Orders characters like UTF-16 code units, and the separator like the Windows separator, so that the tree is the same
/// on all platforms. Where a backslash is not a separator, it sorts after a separator.
bool IsBefore(const std::wstring& a, const std::wstring& b);

/// The rank of each path among all paths; equal paths have equal ranks.
std::vector<std::uint32_t> GetRanks(const std::vector<std::wstring>& paths);

} // namespace LuTestSuite

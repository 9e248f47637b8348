/// The note about memory that a case leaked.
#pragma once

#include <cstdint>
#include <string>

namespace LuTestSuite
{

/// German note; empty if there is no leak.
std::wstring GetLeakNote(std::int64_t bytes);

} // namespace LuTestSuite

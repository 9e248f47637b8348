/// The note on memory that a case left behind.
#pragma once

#include <cstdint>
#include <string>

namespace LuTestSuite
{

/// German note; empty when nothing was left.
std::wstring GetLeakNote(std::int64_t bytes);

} // namespace LuTestSuite

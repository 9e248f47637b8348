/// The note about memory that a case leaked.
#pragma once

#include <cstdint>
#include <string>

namespace LuTestSuite
{

/// The German note; empty if the case leaked nothing.
std::wstring GetLeakNote(std::int64_t bytes);

} // namespace LuTestSuite

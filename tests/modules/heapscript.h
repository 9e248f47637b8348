/// The expected effect of the module "heapscript" on the heap.
#pragma once

#include <cstdint>

namespace heapscript
{

constexpr std::uint64_t c_Leak = 16;
constexpr std::uint64_t c_ScriptPeak = 300'960;
constexpr std::uint64_t c_ScriptAllocations = 7; ///< calls of malloc, realloc and operator new
constexpr std::uint64_t c_ComparedPeak = 400'000;

} // namespace heapscript

/// Bytes for tests: generated inputs, and a description of the difference between two results.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Where and how `actual` differs from `expected`; empty if they are equal.
std::wstring DescribeDifference(std::string_view expected, std::string_view actual);

/// Bytes that look random and do not compress, the same in each run.
std::string MakeNoise(std::size_t size);

/// The values 0 to 255 in order.
std::string MakeEveryByte();

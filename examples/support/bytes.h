/// Bytes for tests: made-up inputs, and words for the difference between two results.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Where and how `actual` departs from `expected`; empty when they are the same.
std::wstring DescribeDifference(std::string_view expected, std::string_view actual);

/// Bytes that look random and do not compress, the same in each run.
std::string MakeNoise(std::size_t size);

/// The values 0 to 255 in order.
std::string MakeEveryByte();

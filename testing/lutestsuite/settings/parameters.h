/// Reading the parameters of a case.
#pragma once

#include <cstdint>
#include <optional>

#include "testing/lutestsuite/lutestsuiterun.h"

namespace LuTestSuite
{

/// Load factor and buckets of parameter maps. The buckets are allocated with the first parameter, because most cases
/// have no parameters.
inline constexpr float c_ParameterLoadFactor = 1.5F;
inline constexpr std::size_t c_ParameterBuckets = 128;

/// The value of a parameter; empty if it is missing or has another type.
std::optional<bool> GetFlag(const ParameterMap& parameters, const wchar_t* name);
std::optional<std::uint32_t> GetNumber(const ParameterMap& parameters, const wchar_t* name);

/// True if the case's description disables it.
bool IsDisabled(const STestCase& testCase);

} // namespace LuTestSuite

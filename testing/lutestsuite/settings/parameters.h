/// Reading the parameters of a case.
#pragma once

#include <cstdint>
#include <optional>

#include "testing/lutestsuite/lutestsuiterun.h"

namespace LuTestSuite
{

/// Density of parameter maps. Their buckets come with the first parameter: most cases never have one.
inline constexpr float c_ParameterLoadFactor = 1.5F;
inline constexpr std::size_t c_ParameterBuckets = 128;

/// The value of a parameter; nothing when the case has none of that name, or none that is a value of the type.
std::optional<bool> GetFlag(const ParameterMap& parameters, const wchar_t* name);
std::optional<std::uint32_t> GetNumber(const ParameterMap& parameters, const wchar_t* name);

/// True when the case's description switches it off.
bool IsDisabled(const STestCase& testCase);

} // namespace LuTestSuite

/// Reading the parameters of a case.
#pragma once

#include <cstdint>
#include <optional>

#include "testing/lutestsuite/lutestsuiterun.h"

namespace LuTestSuite
{

/// Sets the load factor of parameter maps.
void InitParameters(ParameterMap& parameters);

/// The value of a parameter, added if it is missing. The first parameter of a map allocates all buckets of the map; an
/// empty map allocates nothing, because most cases have no parameters.
LbVariant& GetParameter(ParameterMap& parameters, const std::wstring& name);

/// The value of a parameter; empty if it is missing or has another type.
std::optional<bool> GetFlag(const ParameterMap& parameters, const wchar_t* name);
std::optional<std::uint32_t> GetNumber(const ParameterMap& parameters, const wchar_t* name);

/// True if the case's description disables it.
bool IsDisabled(const STestCase& testCase);

} // namespace LuTestSuite

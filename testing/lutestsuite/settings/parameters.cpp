#include "testing/lutestsuite/settings/parameters.h"

namespace
{

/// Null if the case has no parameter of that name.
const LbVariant* findParameter(const LuTestSuite::ParameterMap& parameters, const wchar_t* name)
{
    // Most cases have no parameters; this saves copying the name.
    const auto parameter = parameters.empty() ? parameters.end() : parameters.find(name);
    return parameter == parameters.end() ? nullptr : &parameter->second;
}

} // namespace

std::optional<bool> LuTestSuite::GetFlag(const ParameterMap& parameters, const wchar_t* name)
{
    const LbVariant* const value = findParameter(parameters, name);
    return value == nullptr ? std::nullopt : value->ToBool();
}

std::optional<std::uint32_t> LuTestSuite::GetNumber(const ParameterMap& parameters, const wchar_t* name)
{
    const LbVariant* const value = findParameter(parameters, name);
    return value == nullptr ? std::nullopt : value->ToUInt32();
}

bool LuTestSuite::IsDisabled(const STestCase& testCase)
{
    return GetFlag(testCase.parameters, L"Enable") == false;
}

#include "testing/lutestsuite/settings/parameters.h"

namespace
{

/// Null when there is none.
const LbVariant* findParameter(const LuTestSuite::ParameterMap& parameters, const wchar_t* name)
{
    // Most cases have no parameters, and the name would be copied for nothing.
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

#include "testing/lutestsuite/settings/parameters.h"

namespace
{

/// Null if the case has no parameter of that name.
const LbVariant* findParameter(const LuTestSuite::ParameterMap& parameters, const wchar_t* name)
{
    // Most cases have no parameters; then the name is not copied for the search.
    const auto parameter = parameters.empty() ? parameters.end() : parameters.find(name);
    return parameter == parameters.end() ? nullptr : &parameter->second;
}

} // namespace

void LuTestSuite::InitParameters(ParameterMap& parameters)
{
    constexpr float c_LoadFactor = 1.5F;
    parameters.max_load_factor(c_LoadFactor);
}

LbVariant& LuTestSuite::GetParameter(ParameterMap& parameters, const std::wstring& name)
{
    constexpr std::size_t c_Buckets = 128;
    if (parameters.empty())
    {
        InitParameters(parameters);
        parameters.rehash(c_Buckets);
    }
    return parameters[name];
}

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

/// A hundred unit-test classes with fifty empty sub-tests each, for measuring the runner's overhead.
#pragma once

#include <array>
#include <string>
#include <utility>

#include "base/lbformat.h"
#include "base/lbrtti.h"
#include "base/luunittest.h"

namespace Benchmarks
{

inline constexpr std::size_t c_ClassCount = 100;
inline constexpr std::size_t c_CasesPerClass = 50;

/// Names are created once: in most unit tests they are constants.
inline const std::wstring& GetCaseName(std::size_t index)
{
    static const auto s_names = [] {
        std::array<std::wstring, c_CasesPerClass> names;
        for (std::size_t number = 0; number < names.size(); ++number)
        {
            names[number] = LbFormat(L"does nothing %u", number);
        }
        return names;
    }();
    return s_names[index];
}

template<std::size_t Number>
class CTrivialClass : public LuUnitTest
{
    LB_RTTI(CTrivialClass)

    void InitSubtests() override
    {
        for (std::size_t index = 0; index < c_CasesPerClass; ++index)
        {
            AddSubtest(GetCaseName(index), [] { return eR_Passed; });
        }
    }
};

inline std::wstring GetClassName(std::size_t index)
{
    return LbFormat(L"CTrivialClass%u", index);
}

template<std::size_t Number>
const LbRTTI CTrivialClass<Number>::RTTI(
    GetClassName(Number).c_str(), &LuUnitTest::RTTI,
    []() -> std::unique_ptr<IObject> { return std::make_unique<CTrivialClass>(); }, LbClassFacts::Of<CTrivialClass>());

/// Refers to the records, which makes the classes register themselves in the module that contains this call.
template<std::size_t... Numbers>
std::array<const LbRTTI*, sizeof...(Numbers)> GetRecords(std::index_sequence<Numbers...>)
{
    return {&CTrivialClass<Numbers>::RTTI...};
}

} // namespace Benchmarks

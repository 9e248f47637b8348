#include <chrono>
#include <thread>

#include "benchmarks/trivialclasses.h"

/// A static object, so that the classes register when the module is loaded.
extern const auto c_TrivialClasses = Benchmarks::GetRecords(std::make_index_sequence<Benchmarks::c_ClassCount>());

/// Sleeps for ten milliseconds.
class CTenMilliseconds : public LuUnitTest
{
    LB_RTTI(CTenMilliseconds)

    void InitSubtests() override
    {
        AddSubtest(L"wartet", [] { std::this_thread::sleep_for(std::chrono::milliseconds(10)); });
    }
};
LB_RTTI_CLASS(CTenMilliseconds, LuUnitTest)

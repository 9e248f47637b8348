/// Empty tests of Catch2.
#pragma once

#include <string>

#include <catch2/catch_test_macros.hpp>

#include "benchmarks/trivialtests.h"

namespace Benchmarks
{

inline void DoNothing()
{
    REQUIRE(true);
}

inline bool RegisterCatch2Tests()
{
    for (int test = 0; test < GetTestCount(); ++test)
    {
        const std::string name = "does nothing " + std::to_string(test);
        const Catch::AutoReg registered(Catch::makeTestInvoker(&DoNothing), CATCH_INTERNAL_LINEINFO, Catch::StringRef(),
                                        Catch::NameAndTags(name));
    }
    return true;
}

} // namespace Benchmarks

/// The numbers of a suite in junit.xml, and of the whole file.
#pragma once

#include <cstdint>
#include <string>

#include "testing/lutestsuiterunner/reports/junitcase.h"

namespace Runner
{

struct SJunitCounts
{
    std::uint64_t tests = 0;
    std::uint64_t failures = 0;
    std::uint64_t errors = 0;
    std::uint64_t skipped = 0;
    std::uint64_t time = 0; ///< nanoseconds

    void Add(const SJunitCase& element);
    void Add(const SJunitCounts& other);
};

/// The attributes that a suite and the whole file have, each after a space.
std::string MakeJunitAttributes(const SJunitCounts& counts);

} // namespace Runner

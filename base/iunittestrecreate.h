/// Optional interface of unit tests: their stored reference data can be made anew.
#pragma once

#include <cstdint>

#include "base/lbexport.h"

/// Implemented by a class next to LuUnitTest. Called after SetDataDirectory and InitSubtests.
class LB_API IUnitTestRecreate
{
public:
    /// Whether the sub-test has data that can be made anew.
    virtual bool IsRecreatable(std::uint32_t subtest) const = 0;

    /// Makes them anew. May throw.
    virtual void Recreate(std::uint32_t subtest) = 0;

    /// Last, since the two operations above hold the first slots.
    virtual ~IUnitTestRecreate();
};

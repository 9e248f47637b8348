/// Optional interface of unit tests: their stored reference data can be made anew.
#pragma once

#include <cstdint>

#include "base/lbexport.h"

/// Implemented by a class next to LuUnitTest. Called after SetDataDirectory and InitSubtests.
class LB_API IUnitTestRecreate
{
public:
    /// What the host asks for beside the sub-tests. The runner hands both on as it got them; the product family numbers
    /// its target systems and says what the option selects.
    struct SRequest
    {
        std::uint32_t targetSystem = 0;
        bool option = false;
    };

    /// Whether the sub-test has data that can be made anew.
    virtual bool IsRecreatable(std::uint32_t subtest) const = 0;

    /// Makes them anew. May throw.
    virtual void Recreate(std::uint32_t subtest) = 0;

    /// Last, since the two operations above hold the first slots.
    virtual ~IUnitTestRecreate();

    /// Set by the runner ahead of the two operations. All zero where nobody asked.
    void SetRequest(const SRequest& request) noexcept { m_request = request; }
    const SRequest& GetRequest() const noexcept { return m_request; }

private:
    SRequest m_request;
};

/// Optional interface of unit tests that can re-create their stored reference data.
#pragma once

#include <cstdint>

#include "base/lbexport.h"

/// A unit-test class may derive from this interface in addition to LuUnitTest. The runner calls its operations after
/// SetDataDirectory and InitSubtests.
class LB_API IUnitTestRecreate
{
public:
    /// The host's request. The runner passes on both values unchanged; the product family defines its target systems
    /// and what the option means.
    struct SRequest
    {
        std::uint32_t targetSystem = 0;
        bool option = false;
    };

    /// True if the sub-test has data that can be re-created.
    virtual bool IsRecreatable(std::uint32_t subtest) const = 0;

    /// Re-creates the data. May throw.
    virtual void Recreate(std::uint32_t subtest) = 0;

    /// Declared last, because the two operations above must have the first virtual-table slots.
    virtual ~IUnitTestRecreate();

    /// Set by the runner before it calls the two operations; all zero by default.
    void SetRequest(const SRequest& request) noexcept { m_request = request; }
    const SRequest& GetRequest() const noexcept { return m_request; }

private:
    SRequest m_request;
};

/// The callbacks of a new setup.
#pragma once

#include "testing/lutestsuite/lutestsuitesetup.h"

namespace LuTestSuite
{

struct SNeverCancel
{
    bool operator()() const noexcept { return false; }
};

struct SIgnoreResult
{
    void operator()(LuTestSuiteRun::ECaseRunResult /*result*/) const noexcept {}
};

/// True if the host has replaced neither callback.
bool HasDefaultCallbacks(const LuTestSuiteSetup& setup);

} // namespace LuTestSuite

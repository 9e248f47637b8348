/// Tests that must not change the current process.
#pragma once

#include <functional>
#include <optional>

#include <gtest/gtest.h>

#include "tests/support/os/testaids.h"

/// Forks, calls `prepare` in the fork and, if that returns true, `check`. Expectations that fail in the fork fail the
/// test. False if nothing was checked, because the platform has no fork or `prepare` returned false.
inline bool CheckApart(const std::function<bool()>& prepare, const std::function<void()>& check)
{
    constexpr int c_Unprepared = 77;
    const std::optional<int> status = LbOs::RunInFork([&] {
        if (!prepare())
        {
            return c_Unprepared;
        }
        try
        {
            check();
        }
        catch (...)
        {
            // An exception must not escape: the fork would continue with the other tests.
            ADD_FAILURE() << "exception";
        }
        return testing::Test::HasFailure() ? 1 : 0;
    });
    if (!status || status == c_Unprepared)
    {
        return false;
    }
    EXPECT_EQ(*status, 0);
    return true;
}

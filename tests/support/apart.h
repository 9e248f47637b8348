/// Tests that must not change the current process.
#pragma once

#include <functional>
#include <optional>

#include <gtest/gtest.h>

#include "tests/support/os/testaids.h"

/// Calls `check` in a fork of the process after `prepare` has returned true there; failed expectations of the fork
/// count. False if nothing was checked: on platforms without fork, or if `prepare` returned false.
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
            // If an exception escaped, the fork would continue with the other tests.
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

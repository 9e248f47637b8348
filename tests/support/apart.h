/// Tests that must not change the present process.
#pragma once

#include <functional>
#include <optional>

#include <gtest/gtest.h>

#include "tests/support/os/testaids.h"

/// Calls `check` in a copy of the process, in which its expectations count as well, once `prepare` has said true there.
/// False when nothing was checked: where processes do not fork, or after `prepare` said false.
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
            // On its way out it would have the copy go on with the other tests.
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

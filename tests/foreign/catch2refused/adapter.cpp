// Test cases that Catch2 cannot register.
#include "testing/lutestsuite/catch2.h"

#include <catch2/catch_test_macros.hpp>

TEST_CASE("good")
{
    SUCCEED();
}

TEST_CASE("reserved", "[!unknown]")
{
    FAIL("was run");
}

TEST_CASE("twice", "[tag]")
{
    SUCCEED();
}

TEST_CASE("twice", "[tag]")
{
    FAIL("was run");
}

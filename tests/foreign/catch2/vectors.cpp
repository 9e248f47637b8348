// Tests of each outcome, and sections.

#include <cstdlib>
#include <stdexcept>
#include <vector>

#include <catch2/catch_test_macros.hpp>
#include <catch2/generators/catch_generators.hpp>

TEST_CASE("vectors grow", "[vector]")
{
    std::vector<int> vector(3);
    SECTION("by one")
    {
        vector.push_back(0);
        REQUIRE(vector.size() == 4);
    }
    SECTION("by two")
    {
        vector.resize(5);
        INFO("after resize");
        CHECK(vector.size() == 6);
        CHECK(vector.empty());
    }
}

TEST_CASE("names: with/strange*characters")
{
    CHECK(GENERATE(1, 2, 3) < 4);
}

TEST_CASE("names: with/strange?characters")
{
    SUCCEED();
}

TEST_CASE("skips")
{
    SKIP("no coprocessor");
}

TEST_CASE("throws")
{
    throw std::runtime_error("broken");
}

TEST_CASE("hidden", "[.]")
{
    FAIL("was run");
}

TEST_CASE("may fail", "[!mayfail]")
{
    CHECK(1 == 2);
}

TEST_CASE("should fail", "[!shouldfail]")
{
    CHECK(1 == 2);
}

TEST_CASE("should fail but passes", "[!shouldfail]")
{
    CHECK(1 == 1);
}

TEST_CASE("aborts")
{
    std::abort();
}

TEST_CASE("generated values fail")
{
    const int value = GENERATE(1, 2, 3);
    CHECK(value < 3);
}

TEST_CASE("may throw", "[!mayfail]")
{
    throw std::runtime_error("known defect");
}

TEST_CASE("should throw", "[!shouldfail]")
{
    throw std::runtime_error("known defect");
}

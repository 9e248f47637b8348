// A second module with suites of the same names.
#define LUTESTSUITE_SUITE_PREFIX "Second/"
#include "testing/lutestsuite/googletest.h"

TEST(Arithmetic, Subtracts)
{
    EXPECT_EQ(3 - 1, 2);
}

// A second module whose suites have the same names as those of the first one.
#define LUTESTSUITE_SUITE_PREFIX "Second/"
#include "testing/lutestsuite/googletest.h"

TEST(Arithmetic, Subtracts)
{
    EXPECT_EQ(3 - 1, 2);
}

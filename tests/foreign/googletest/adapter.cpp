// Turns the sources of a GoogleTest program into a test module. The other sources do not mention LuTestSuite.
#include "testing/lutestsuite/googletest.h"

// Turns the sources of a Catch2 program into a test module. The other sources do not mention LuTestSuite.
#include "testing/lutestsuite/catch2.h"

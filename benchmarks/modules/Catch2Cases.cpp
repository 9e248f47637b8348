// Empty tests of Catch2 as cases.

#include "benchmarks/trivialcatch2tests.h"
#include "testing/lutestsuite/catch2.h"

// A static object, so that the tests exist before the adapter looks for them.
extern const bool c_HaveCatch2Tests = Benchmarks::RegisterCatch2Tests();

// Empty tests of GoogleTest as cases.

#include "benchmarks/trivialgoogletests.h"
#include "testing/lutestsuite/googletest.h"

// A static object, so that the tests exist before the adapter looks for them.
extern const bool c_HaveGoogleTests = Benchmarks::RegisterGoogleTests();

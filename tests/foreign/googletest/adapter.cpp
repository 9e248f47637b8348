// Turns the sources of a GoogleTest program into a test module. The other sources know nothing of it.
#include "testing/lutestsuite/googletest.h"

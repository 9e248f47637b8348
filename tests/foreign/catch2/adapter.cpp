// Turns the sources of a Catch2 program into a test module. The other sources know nothing of it.
#include "testing/lutestsuite/catch2.h"

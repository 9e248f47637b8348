// What makes a GoogleTest program a test module; the other sources are a program's.
#include "testing/lutestsuite/googletest.h"

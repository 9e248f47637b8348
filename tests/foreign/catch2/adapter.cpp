// What makes a Catch2 program a test module; the other sources are a program's.
#include "testing/lutestsuite/catch2.h"

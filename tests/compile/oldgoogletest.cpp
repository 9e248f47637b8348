/// The adapter with a GoogleTest that lacks the macro by which the adapter recognises version 1.12.
#include <gtest/gtest.h>

#undef GTEST_FLAG_SET

#include "testing/lutestsuite/googletest.h"

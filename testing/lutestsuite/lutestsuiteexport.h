/// Export marks of LuTestSuite.
#pragma once

#include "base/os/platform.h"

#ifdef LuTestSuite_EXPORTS
#define LUTESTSUITE_API LB_OS_EXPORT
#else
#define LUTESTSUITE_API LB_OS_IMPORT
#endif

/// Export marks of LbBase.
#pragma once

#include "base/os/platform.h"

#ifdef LbBase_EXPORTS
#define LB_API LB_OS_EXPORT
#else
#define LB_API LB_OS_IMPORT
#endif

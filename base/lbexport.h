/// LB_API, which exports the declarations of LbBase or imports them.
#pragma once

#include "base/os/platform.h"

#ifdef LbBase_EXPORTS
#define LB_API LB_OS_EXPORT
#else
#define LB_API LB_OS_IMPORT
#endif

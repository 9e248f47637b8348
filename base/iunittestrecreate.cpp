#include "base/iunittestrecreate.h"

// Out of line, so that all modules share one type information for their casts.
IUnitTestRecreate::~IUnitTestRecreate() = default;

#include "base/idebugging.h"

// Out of line, so that all modules share one type information for their casts.
IDebugging::~IDebugging() = default;

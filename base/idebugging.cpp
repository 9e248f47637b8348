#include "base/idebugging.h"

// Out of line, so that all modules share one std::type_info, which dynamic_cast between modules needs.
IDebugging::~IDebugging() = default;

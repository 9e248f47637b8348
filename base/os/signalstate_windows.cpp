#include "base/os/signalstate.h"

void LbOs::RecordSignals() noexcept {}

void LbOs::RestoreSignals() noexcept {}

void LbOs::DisarmTimers() noexcept {}

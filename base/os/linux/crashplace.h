/// Finds the module of an instruction without the loader, whose lock a crashed thread may hold. Internal to the Linux
/// side.
#pragma once

#include "base/os/crash.h"

namespace LbOs::Linux
{

/// Sets module and offset from the address. Makes only system calls.
void FindCrashPlace(SCrash& crash) noexcept;

} // namespace LbOs::Linux

/// The module of an instruction, found without the loader, whose lock a crashed thread may hold. Internal to the Linux
/// side.
#pragma once

#include "base/os/crash.h"

namespace LbOs::Linux
{

/// Fills module and offset by the address. Makes system calls only.
void FindCrashPlace(SCrash& crash) noexcept;

} // namespace LbOs::Linux

/// Restores the original limit of open files for started programs. Internal to the Linux side.
#pragma once

namespace LbOs::Linux
{

/// Sets the limit to its value before the owner raised it. A process calls it before it runs its program, after opening
/// its last file. Makes only system calls.
void RestoreOpenFileLimit() noexcept;

} // namespace LbOs::Linux

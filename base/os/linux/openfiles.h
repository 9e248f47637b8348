/// Restores the original limit of open files for started programs. Internal to the Linux side.
#pragma once

namespace LbOs::Linux
{

/// Restores the limit that applied before the owner raised it. A child calls this after opening its last file and
/// before running its program. Makes only system calls.
void RestoreOpenFileLimit() noexcept;

} // namespace LbOs::Linux

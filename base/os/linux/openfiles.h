/// What a process that has raised its limit of open files owes to those that it starts. Internal to the Linux side.
#pragma once

namespace LbOs::Linux
{

/// To be called by a process before it runs its program, when it opens no more files: the limit is as it was before the
/// owner raised it. Makes system calls only.
void RestoreOpenFileLimit() noexcept;

} // namespace LbOs::Linux

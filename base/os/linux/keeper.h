/// The keeper: a small process that ends and removes what must not outlive the current process. Internal to the Linux
/// side.
///
/// A killed process cannot clean up. The keeper is a fork that waits for the end of this process, then removes the
/// files and ends the process trees listed in its state, and then ends itself. EnsureKeeper or the first entry starts
/// it; if it was killed, the next entry starts it again. Any thread.
#pragma once

#include "base/os/linux/keptentries.h"

namespace LbOs::Linux
{

/// Starts the keeper if none is running. Being a fork, the keeper keeps the memory that the process has at that time.
void EnsureKeeper();

/// Takes a free entry; null if all are taken or no keeper runs. If a child that uses the entry has run its program, the
/// caller must release the entry before the child's process id can be reused.
SKeptGroup* TakeKeptGroup();
void ReleaseKeptGroup(SKeptGroup* group) noexcept;

/// Call before creating the file; null if no entry is free, the path is too long, or no keeper runs. Releasing does not
/// remove the file.
SKeptFile* KeepFile(const char* path);
void ReleaseKeptFile(SKeptFile* file) noexcept;

} // namespace LbOs::Linux

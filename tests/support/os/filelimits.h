/// Limits on what a process may do with files. Part of the tests, in no library.
#pragma once

#include <cstddef>
#include <memory>

namespace LbOs
{

/// While the result exists, writing beyond `size` bytes fails for every file of the process, as on a full disk; null if
/// the system has no such limit.
std::shared_ptr<void> LimitFileSize(std::size_t size);

/// Makes locking files and folders fail, as on a file system without locks. Affects the calling thread until it ends,
/// and the threads and processes that it starts. False if that is impossible.
bool ForbidLocks();

} // namespace LbOs

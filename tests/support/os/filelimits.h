/// Limits on what a process may write. Part of the tests, in no library.
#pragma once

#include <cstddef>
#include <memory>

namespace LbOs
{

/// While the result exists, writing beyond `size` bytes fails for every file of the process, as on a full disk; null if
/// the system has no such limit.
std::shared_ptr<void> LimitFileSize(std::size_t size);

} // namespace LbOs

/// Limits of what a process may write. A part of the tests, in no library.
#pragma once

#include <cstddef>
#include <memory>

namespace LbOs
{

/// No file of the process takes bytes beyond `size` as long as the result lives, as on a full disk; null where the
/// system knows no such limit.
std::shared_ptr<void> LimitFileSize(std::size_t size);

} // namespace LbOs

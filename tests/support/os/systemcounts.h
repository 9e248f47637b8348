/// Counts system calls that a function causes.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace LbOs
{

/// Counts the writes to standard output while `function` runs, also those of processes that `function` starts. The
/// output is lost. Empty if the system cannot tell writes apart.
std::optional<std::size_t> CountWrites(const std::function<void()>& function);

/// Counts how often any process begins to list the folder while `function` runs. Two listings that begin at the
/// same time may count as one. Empty if the system does not tell.
std::optional<std::size_t> CountFolderReads(const std::wstring& folder, const std::function<void()>& function);

} // namespace LbOs

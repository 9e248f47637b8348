/// Files that only grow, and data that must survive a crash of the machine. Paths as in files.h; any thread.
#pragma once

#include <cstdint>
#include <string>

#include "base/lbexport.h"
#include "base/os/files.h"

namespace LbOs
{

/// Creates a file and opens it for writing at its end. c_InvalidFile on failure, or if something of this name exists.
/// Other programs may read the file while it is open; child processes do not inherit it.
LB_API FileHandle CreateForAppending(const std::wstring& path);

/// Opens a file for reading from the byte at `offset` on. c_InvalidFile on failure.
LB_API FileHandle OpenForReadingFrom(const std::wstring& path, std::uint64_t offset);

/// Flushes all written bytes to the disk and waits until they are there. False on failure: earlier bytes may then be
/// lost, even if a repeated call succeeds.
LB_API bool SynchroniseFile(FileHandle file);

/// The same for a directory: names that were created, changed or removed in it. False on failure. On Windows, which
/// does that by itself, only checks that the directory exists.
LB_API bool SynchroniseDirectory(const std::wstring& path);

} // namespace LbOs

/// The index of an archive: a file in its folder with the runs that were read earlier.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/history/archive/archive.h"

namespace Runner::History
{

/// A file at a point in time.
struct SFileStamp
{
    std::wstring name; ///< path relative to the archive
    std::int64_t size = -1;
    std::int64_t time = 0; ///< of its last change, in the system's unit

    bool operator==(const SFileStamp&) const = default;
};

/// A run with the files that it was read from.
struct SIndexedRun
{
    std::vector<SFileStamp> stamps; ///< taken before the files were read
    std::string digest;             ///< of their contents
    SRun run;
    bool isReadable = true; ///< false: the run has only its name
};

struct SIndex
{
    std::vector<SCaseName> names;
    std::map<std::wstring, SIndexedRun> runs; ///< by name
    std::int64_t time = 0;                    ///< when the file was written, in the system's unit
    std::string digest;                       ///< of the whole index; empty if there is no index
};

/// Returns an empty index if the file is missing, damaged or of another version.
SIndex ReadIndex(const std::wstring& path);

/// Returns the digest of what was written; empty if the file cannot be written.
std::string WriteIndex(const std::wstring& path, const std::vector<SCaseName>& names,
                       const std::vector<const SIndexedRun*>& runs);

} // namespace Runner::History

/// Queries single entries of directories, and detects changes of directories. All calls are thread-safe.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/lbexport.h"
#include "base/os/files.h"

namespace LbOs
{

/// Detects added and removed entries, because they change the directory's times. Not detected: a change that follows
/// another one within the resolution of the file system's clock.
struct SDirectoryStamp
{
    SFileIdentity identity;
    std::int64_t modificationTime; ///< nanoseconds
    std::int64_t changeTime;       ///< nanoseconds; unlike modificationTime, programs cannot set it freely

    bool operator==(const SDirectoryStamp&) const = default;
};

/// Empty if the directory does not exist or cannot be examined.
LB_API std::optional<SDirectoryStamp> GetDirectoryStamp(const std::wstring& directory);

/// True if this system's clock sets the times of the directory, because it is on a file system of this machine. False
/// if the directory is on a server, or if that is unknown.
LB_API bool HasTimesOfThisSystem(const std::wstring& directory);

/// A directory that must be the working directory of the process.
class LB_API CHomeDirectory
{
public:
    /// Takes the full path of an existing directory.
    explicit CHomeDirectory(std::wstring path);

    /// Makes the directory the working directory unless it already is. That check needs at most one cheap system call.
    /// False on failure. Any thread.
    bool Ensure() const;

private:
    std::wstring m_path;
    SFileIdentity m_identity{}; ///< used only on Linux; Windows compares paths
};

/// True if VisitDirectory would report a non-directory with exactly this name. Looks up only this entry.
LB_API bool HoldsFile(const std::wstring& directory, const std::wstring& name);

} // namespace LbOs

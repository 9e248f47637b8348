/// Queries single entries of directories, and detects changes of directories. All calls are thread-safe.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/lbexport.h"
#include "base/os/files.h"

namespace LbOs
{

/// Detects added and removed entries: each such change moves the directory's times, except a change within the
/// resolution of the file system's clock after another one.
struct SDirectoryStamp
{
    SFileIdentity identity;
    std::int64_t modificationTime; ///< nanoseconds
    std::int64_t changeTime;       ///< nanoseconds; unlike modificationTime, programs cannot set it freely

    bool operator==(const SDirectoryStamp&) const = default;
};

/// Empty if the directory does not exist or cannot be examined.
LB_API std::optional<SDirectoryStamp> GetDirectoryStamp(const std::wstring& directory);

/// A directory that must be the working directory of the process.
class LB_API CHomeDirectory
{
public:
    /// Takes the full path of an existing directory.
    explicit CHomeDirectory(std::wstring path);

    /// Makes the directory the working directory if it is not. Needs at most one cheap system call to check. False on
    /// failure. Any thread.
    bool Ensure() const;

private:
    std::wstring m_path;
    SFileIdentity m_identity{}; ///< used only on Linux, where the path must be looked up
};

/// True if VisitDirectory would report an entry with exactly this name that is no directory. Looks up only this entry.
LB_API bool HoldsFile(const std::wstring& directory, const std::wstring& name);

} // namespace LbOs

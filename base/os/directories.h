/// Questions about single entries of directories, and whether a directory has changed. All calls are thread-safe.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/lbexport.h"
#include "base/os/files.h"

namespace LbOs
{

/// What tells whether entries were added to a directory or taken away: such a change moves its times, unless the file
/// system's clock still shows the moment of the change before.
struct SDirectoryStamp
{
    SFileIdentity identity;
    std::int64_t modificationTime; ///< nanoseconds
    std::int64_t changeTime;       ///< nanoseconds; unlike the other one programs cannot set it at will

    bool operator==(const SDirectoryStamp&) const = default;
};

/// Nothing when there is no such directory, or it cannot be looked at.
LB_API std::optional<SDirectoryStamp> GetDirectoryStamp(const std::wstring& directory);

/// A directory that is to be the working directory of the process.
class LB_API CHomeDirectory
{
public:
    /// Of an existing directory, by its full path.
    explicit CHomeDirectory(std::wstring path);

    /// Makes it the working directory where it is not. Asks the system one cheap question, or none. False when it
    /// cannot be had. Any thread.
    bool Ensure() const;

private:
    std::wstring m_path;
    SFileIdentity m_identity{}; ///< used on Linux alone, where paths have to be looked up
};

/// True when VisitDirectory would show an entry of exactly this name that is no directory. Asks for this entry alone.
LB_API bool HoldsFile(const std::wstring& directory, const std::wstring& name);

} // namespace LbOs

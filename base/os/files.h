/// Files, directories and the places of the process. Paths are native: the platform's separator, any length the system
/// takes. Unless stated otherwise a failed call has no effect and may be repeated; all calls are thread-safe except
/// that the working directory is one per process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/lbexport.h"

namespace LbOs
{

enum class EEntry
{
    Missing,
    File,      ///< anything that is not a directory
    Directory, ///< also a link to one
};

/// One entry of a directory listing. The name is valid during the visit only.
struct SDirectoryEntry
{
    const std::wstring& name;
    bool isDirectory; ///< links are followed
    bool isLink;      ///< as IsLink says
};

/// Which file it is among all of the machine, whatever its names are.
struct SFileIdentity
{
    std::uint64_t volume;
    std::uint64_t number;

    auto operator<=>(const SFileIdentity&) const = default;
};

struct SFileStatus
{
    SFileIdentity identity;
    std::int64_t size;
    std::int64_t modificationTime; ///< in the system's own steps
    bool isRegularFile;            ///< as IsRegularFile says
    bool hasSeveralNames;          ///< hard links
};

/// True when the path does not depend on the working directory (nor on its drive). Nothing is looked up.
LB_API bool IsAbsolutePath(std::wstring_view path) noexcept;

/// What stands at `path`, links followed; Missing also when the path cannot be looked at, as a link to nothing.
LB_API EEntry QueryEntry(const std::wstring& path);

/// True when nothing stands at `path`, links followed: it or a part of the way is missing, or links lead in a circle.
/// False also when the system does not tell, as behind a folder that may not be entered.
LB_API bool IsMissing(const std::wstring& path);

/// Nothing when the path cannot be looked at. Links are followed.
LB_API std::optional<SFileStatus> GetFileStatus(const std::wstring& path);

/// As GetFileStatus, but a link at the end of the path is not followed: that of the link itself.
LB_API std::optional<SFileStatus> GetPlaceStatus(const std::wstring& path);

/// True when `path` itself is a link, whatever it leads to: a symbolic link, on Windows also a mount point. What else
/// stands in for its content there, as files of a cloud do, is none.
LB_API bool IsLink(const std::wstring& path);

/// The path that the link at `path` names, absolute: a relative one is meant from the link's folder, which `path` must
/// name without links on the way. The target need not exist. Empty when there is no link, or it cannot be read.
LB_API std::wstring GetLinkTarget(const std::wstring& path);

/// True for a file with bytes of its own: no directory, device or pipe, whose reading may wait or never end. Links are
/// followed.
LB_API bool IsRegularFile(const std::wstring& path);

/// True when both paths lead to one file or directory, whatever their names: links are followed, and a file may have
/// several names. False when either cannot be looked at.
LB_API bool AreSameFile(const std::wstring& path, const std::wstring& otherPath);

/// Visits each entry of `directory` but "." and "..", in the file system's order.
/// Returns false when the directory cannot be opened, or not be read to its end. Exceptions of `visit` pass through.
LB_API bool VisitDirectory(const std::wstring& directory, const std::function<void(const SDirectoryEntry&)>& visit);

/// Creates one directory level. True when it exists afterwards.
LB_API bool MakeDirectory(const std::wstring& path);

/// Removes a file or a link (never a link's target). False on failure.
LB_API bool RemoveFile(const std::wstring& path);

/// Removes an empty directory. False on failure.
LB_API bool RemoveEmptyDirectory(const std::wstring& path);

/// Absolute path of the working directory without trailing separator (but for a root's own); empty when it cannot be
/// had.
LB_API std::wstring GetWorkingDirectory();
LB_API bool SetWorkingDirectory(const std::wstring& path);

/// The path as it stands when the working directory changes: absolute, by the present working directory, without "."
/// and "..". Names are kept as they are, links too; only ".." goes where the platform goes with it: on Linux behind a
/// link to the parent of its target, on Windows by the text. A separator at the end stays; an empty path stays empty.
/// The path need not exist. Throws LbException when it cannot be had: of a relative path without a working directory.
LB_API std::wstring GetFullPath(const std::wstring& path);

/// The one name of an existing file or directory, with all links resolved, without separator at its end; empty when it
/// cannot be had.
LB_API std::wstring GetCanonicalPath(const std::wstring& path);

/// As GetCanonicalPath, but a link at the end of the path is not followed: the one name of the link itself.
LB_API std::wstring GetCanonicalPlace(const std::wstring& path);

/// Absolute path of the running executable.
LB_API std::wstring GetExecutablePath();

/// Folder for the data of the present user's programs, without trailing separator: %APPDATA% on Windows, $XDG_DATA_HOME
/// or ~/.local/share on Linux. Empty when the system knows none.
LB_API std::wstring GetUserDataDirectory();

/// Folder for temporary files, without trailing separator.
LB_API std::wstring GetTemporaryDirectory();

/// An open file. Opaque: the platform's handle, moved by the stream classes only.
using FileHandle = std::intptr_t;
inline constexpr FileHandle c_InvalidFile = -1;

/// Opens for reading, or creates or truncates for writing. c_InvalidFile on failure (missing, a directory, no access).
LB_API FileHandle OpenForReading(const std::wstring& path);
LB_API FileHandle OpenForWriting(const std::wstring& path);

/// Reads up to `size` bytes; 0 at the end of the file, -1 on failure.
LB_API std::int64_t ReadFileBytes(FileHandle file, void* buffer, std::size_t size);

/// Writes all bytes or returns false (disk full, handle closed).
LB_API bool WriteFileBytes(FileHandle file, const void* data, std::size_t size);

/// Size in bytes, -1 when it cannot be had (a pipe, a device).
LB_API std::int64_t GetFileSize(FileHandle file);

/// Closes; false when buffered data could not be brought to the disk. The handle is invalid afterwards either way.
LB_API bool CloseFile(FileHandle file);

} // namespace LbOs

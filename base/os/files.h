/// Files, directories and well-known places. Paths are native: the platform's separator, any length that the system
/// accepts. Unless stated otherwise, a failed call has no effect and may be repeated, and all calls are thread-safe,
/// except that the working directory belongs to the whole process.
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
    Directory, ///< including a link to a directory
};

/// One entry of a directory listing. The name is valid only during the visit.
struct SDirectoryEntry
{
    const std::wstring& name;
    bool isDirectory; ///< for a link: whether its target is a directory
    bool isLink;      ///< as returned by IsLink
};

/// Identifies a file on the machine, independent of its names.
struct SFileIdentity
{
    std::uint64_t volume;
    std::uint64_t number;

    auto operator<=>(const SFileIdentity&) const = default;
};

/// What the system knows of a file or directory.
struct SFileStatus
{
    SFileIdentity identity;
    std::int64_t size;
    std::int64_t modificationTime; ///< in the system's unit
    bool isRegularFile;            ///< as returned by IsRegularFile
    bool hasSeveralNames;          ///< has hard links
};

/// True if the path depends neither on the process's working directory nor on a drive's working directory. Does not
/// access the file system.
LB_API bool IsAbsolutePath(std::wstring_view path) noexcept;

/// The kind of the entry at `path`, following links. Missing also if the path cannot be examined, as for a broken link.
LB_API EEntry QueryEntry(const std::wstring& path);

/// True if no entry exists at `path`, following links: a part of the path is missing, or links form a loop. False also
/// if the system gives no answer, as for a folder without access.
LB_API bool IsMissing(const std::wstring& path);

/// Empty if the path cannot be examined. Follows links.
LB_API std::optional<SFileStatus> GetFileStatus(const std::wstring& path);

/// Like GetFileStatus, but for a link at the end of the path returns the link's own status.
LB_API std::optional<SFileStatus> GetPlaceStatus(const std::wstring& path);

/// True if `path` itself is a link, even a broken one: a symbolic link, on Windows also a mount point. Other
/// placeholders, such as files of cloud storage, are not links.
LB_API bool IsLink(const std::wstring& path);

/// The absolute path of the link's target. A relative target refers to the link's folder, which `path` must name
/// without links. The target need not exist. Empty if `path` is not a link or cannot be read.
LB_API std::wstring GetLinkTarget(const std::wstring& path);

/// True for a file with its own bytes: not a directory, device or pipe, for which reading may block or never end.
/// Follows links.
LB_API bool IsRegularFile(const std::wstring& path);

/// True if both paths name the same file or directory, through links or hard links. False if one cannot be examined.
LB_API bool AreSameFile(const std::wstring& path, const std::wstring& otherPath);

/// Calls `visit` for each entry of `directory` except "." and "..", in the file system's order. Returns false if the
/// directory cannot be opened or read completely. Passes on exceptions of `visit`.
LB_API bool VisitDirectory(const std::wstring& directory, const std::function<void(const SDirectoryEntry&)>& visit);

/// Creates one directory level. True if the directory exists afterwards.
LB_API bool MakeDirectory(const std::wstring& path);

/// Removes a file or a link, not the link's target. False on failure.
LB_API bool RemoveFile(const std::wstring& path);

/// Removes an empty directory. False on failure.
LB_API bool RemoveEmptyDirectory(const std::wstring& path);

/// Absolute path of the working directory without trailing separator, except for a root; empty if it is unknown.
LB_API std::wstring GetWorkingDirectory();
LB_API bool SetWorkingDirectory(const std::wstring& path);

/// The absolute path, based on the current working directory, without "." and "..". Keeps names, including links; ".."
/// is resolved as the platform does: on Linux, after a link, to the parent of the link's target; on Windows textually.
/// Keeps a trailing separator; an empty path stays empty. The path need not exist. Throws LbException for a relative
/// path if the working directory is unknown.
LB_API std::wstring GetFullPath(const std::wstring& path);

/// The unique name of an existing file or directory, with all links resolved, without trailing separator; empty on
/// failure.
LB_API std::wstring GetCanonicalPath(const std::wstring& path);

/// Like GetCanonicalPath, but does not resolve a link at the end of the path: the unique name of the link itself.
LB_API std::wstring GetCanonicalPlace(const std::wstring& path);

/// Absolute path of the running executable.
LB_API std::wstring GetExecutablePath();

/// Folder for application data of the current user, without trailing separator: %APPDATA% on Windows, $XDG_DATA_HOME or
/// ~/.local/share on Linux. Empty if the system has none.
LB_API std::wstring GetUserDataDirectory();

/// Folder for temporary files, without trailing separator.
LB_API std::wstring GetTemporaryDirectory();

/// An open file, as the platform's opaque handle. The caller closes it with CloseFile.
using FileHandle = std::intptr_t;
inline constexpr FileHandle c_InvalidFile = -1;

/// Opens for reading, or creates or truncates for writing. c_InvalidFile on failure (missing, a directory, no access).
LB_API FileHandle OpenForReading(const std::wstring& path);
LB_API FileHandle OpenForWriting(const std::wstring& path);

/// Reads up to `size` bytes; 0 at the end of the file, -1 on failure.
LB_API std::int64_t ReadFileBytes(FileHandle file, void* buffer, std::size_t size);

/// Writes all bytes, or returns false (disk full, handle closed).
LB_API bool WriteFileBytes(FileHandle file, const void* data, std::size_t size);

/// Size in bytes; -1 if it is unknown (a pipe, a device).
LB_API std::int64_t GetFileSize(FileHandle file);

/// Closes the file; false if buffered data could not be written. The handle is invalid afterwards in both cases.
LB_API bool CloseFile(FileHandle file);

} // namespace LbOs

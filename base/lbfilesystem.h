/// Files and well-known directories. Callable from any thread; all threads share the working directory of the process.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/lbexport.h"
#include "base/os/files.h"

namespace LbFileSystem
{

/// Kinds of well-known directories; the numbers are fixed.
enum EDirectoryKind
{
    eDK_Executable = 1,  ///< folder of the running executable
    eDK_Temporary = 2,   ///< temporary files
    eDK_UserData = 5,    ///< program data of the current user
    eDK_DebugOutput = 15 ///< output for developers: "LuDebugOutput" in the temporary directory
};

/// The directory of a kind, with final separator. It need not exist. Throws LbException if the system does not know
/// such a directory.
LB_API std::wstring GetDirectory(EDirectoryKind kind);

LB_API bool Exists(const std::wstring& path);
LB_API bool IsFile(const std::wstring& path);
LB_API bool IsDirectory(const std::wstring& path);

/// Creates the directory and its missing parents; true if the directory exists afterwards.
LB_API bool AssertDirectory(const std::wstring& path);

/// Names of the files (not directories) in a directory, ordered by code unit; empty if it cannot be read.
LB_API std::vector<std::wstring> GetFileNames(const std::wstring& directory);

/// Removes a file, or a directory with its content; removes links, not their targets. True if nothing is left.
LB_API bool RemoveTree(const std::wstring& directory);

/// Copies a file's content, replacing the target. False if the source cannot be read or the target cannot be written.
LB_API bool CopyContent(const std::wstring& source, const std::wstring& target);

/// True if both files can be read and have the same bytes.
LB_API bool HaveSameContent(const std::wstring& path, const std::wstring& otherPath);

/// Writes a file as a whole: `write` gets the path of a new file in the same folder, writes and closes that file; the
/// new file then replaces the one at `path` in one step. If `write` throws, as on a full disk, or the file cannot be
/// replaced, the old file stays unchanged, the new file is removed, and the exception passes through (LbException for a
/// file that cannot be replaced). A link at `path` stays and leads to the new file; other names of the old file (hard
/// links) keep the old content. Permissions: see LbOs::RenameFile.
///
/// If `path` is a device or a pipe, or if the user may not create files in the folder, `write` gets `path` itself; a
/// failure may then leave part of the output.
LB_API void WriteWhole(const std::wstring& path, const std::function<void(const std::wstring& place)>& write);

/// Reads a whole file. If the file cannot be read, throws LbException with a German message that names the file.
LB_API std::string ReadFile8Bit(const std::wstring& path);

} // namespace LbFileSystem

/// Files and the well-known directories. Any thread, but the working directory is one per process.
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
    eDK_UserData = 5,    ///< data of the present user's programs
    eDK_DebugOutput = 15 ///< output for developers: "LuDebugOutput" in the temporary files
};

/// Directory string (with separator) of a kind. It may not exist. Throws LbException when the system knows none.
LB_API std::wstring GetDirectory(EDirectoryKind kind);

LB_API bool Exists(const std::wstring& path);
LB_API bool IsFile(const std::wstring& path);
LB_API bool IsDirectory(const std::wstring& path);

/// True when the directory exists, after it and its missing parents were created if need be.
LB_API bool AssertDirectory(const std::wstring& path);

/// Names of the files (not directories) of a directory, ordered by code unit; empty when it cannot be read.
LB_API std::vector<std::wstring> GetFileNames(const std::wstring& directory);

/// Removes a directory with all that is in it, or a file; links are removed as links. True when nothing is left.
LB_API bool RemoveTree(const std::wstring& directory);

/// Copies a file's content over what stands at the target. False when there is no such file, or the target cannot be
/// written.
LB_API bool CopyContent(const std::wstring& source, const std::wstring& target);

/// Reads a whole file. Throws LbException with a German message naming the file when it cannot be read.
LB_API std::string ReadFile8Bit(const std::wstring& path);

} // namespace LbFileSystem

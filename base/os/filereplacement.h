/// Replaces files by new ones. Paths as in files.h; any thread.
#pragma once

#include <string>

#include "base/lbexport.h"

namespace LbOs
{

/// True if the current user may create files in `directory`; false if it does not exist.
LB_API bool MayAddFiles(const std::wstring& directory);

/// Renames a file within its file system and replaces an existing file of that name in one step: other programs see
/// either the old or the new file as a whole. On Linux the new file gets the permissions and the owner of the old one,
/// as far as the current user may set them; on Windows it keeps the permissions inherited from its folder. False on
/// failure, which changes nothing: the file does not exist, or the target is a directory, a read-only file, or a file
/// that another program has opened without permitting deletion.
LB_API bool RenameFile(const std::wstring& path, const std::wstring& newPath);

} // namespace LbOs

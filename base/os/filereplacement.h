/// Putting a new file in the place of an old one. Paths as in files.h; any thread.
#pragma once

#include <string>

#include "base/lbexport.h"

namespace LbOs
{

/// Whether the present user may make files in `directory`; false when there is none.
LB_API bool MayAddFiles(const std::wstring& directory);

/// Gives a file another name in its directory. A file that had that name is replaced in one step: who opens it sees the
/// one or the other as a whole. It hands down its permissions and owner on Linux, as far as the present user may set
/// them; on Windows the new file has what its folder gave it. False on failure, which changes nothing: there is no such
/// file, a directory has the other name, or a file that may not be written, or that another program has open without
/// letting others delete it.
LB_API bool RenameFile(const std::wstring& path, const std::wstring& newPath);

} // namespace LbOs

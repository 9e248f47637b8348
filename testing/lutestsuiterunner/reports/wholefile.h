/// Writes whole files of bytes.
#pragma once

#include <string>

#include "base/lbfilesystem.h"
#include "base/lustream.h"

namespace Runner
{

/// Calls `write` with a stream into a new file, which then replaces the file at `path`. Throws LbException with a
/// German message that names the file.
template<typename F>
void WriteWholeFile(const std::wstring& path, const F& write)
{
    LbFileSystem::WriteWhole(path, [&write](const std::wstring& place) {
        LuStreamWriteBinaryFile file(place);
        write(file);
        file.Close();
    });
}

} // namespace Runner

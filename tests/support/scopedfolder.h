/// A folder for the files of one test.
#pragma once

#include <string>
#include <string_view>

#include "base/inoncopyable.h"

/// Creates a folder of its own under the temporary files and removes it with all that is in it at the end of the scope.
class ScopedFolder : public INonCopyable
{
public:
    ScopedFolder();
    ~ScopedFolder();

    /// Full path, with separator at its end.
    const std::wstring& GetPath() const noexcept { return m_path; }

    /// Writes a file and returns its full path. Folders in front of the name ("a/b/file.txt", "/" on all platforms) are
    /// created.
    std::wstring WriteFile(std::wstring_view name, std::string_view bytes) const;

    /// Creates a folder with its missing parents. Returns its full path, with separator at its end.
    std::wstring MakeFolder(std::wstring_view name) const;

    /// Full path of a name in the folder, which need not exist.
    std::wstring GetPathOf(std::wstring_view name) const;

private:
    std::wstring m_path;
};

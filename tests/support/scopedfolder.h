/// A folder for the files of one test.
#pragma once

#include <string>
#include <string_view>

#include "base/inoncopyable.h"

/// Creates a folder below the temporary folder; the destructor removes it with its contents.
class ScopedFolder : public INonCopyable
{
public:
    ScopedFolder();
    ~ScopedFolder();

    /// Full path, with trailing separator.
    const std::wstring& GetPath() const noexcept { return m_path; }

    /// Writes a file and returns its full path. Creates the folders in the name ("a/b/file.txt", "/" on all platforms).
    std::wstring WriteFile(std::wstring_view name, std::string_view bytes) const;

    /// Creates a folder with its parents. Returns its full path, with trailing separator.
    std::wstring MakeFolder(std::wstring_view name) const;

    /// Full path of a file or folder with this name in the folder; it need not exist.
    std::wstring GetPathOf(std::wstring_view name) const;

private:
    std::wstring m_path;
};

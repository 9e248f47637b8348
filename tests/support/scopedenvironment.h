/// Environment variables for one test.
#pragma once

#include <string>

#include "base/inoncopyable.h"
#include "tests/support/scopedfolder.h"

/// Sets an environment variable of the process; the destructor restores the former value. One thread at a time, while
/// no other thread reads the environment.
class ScopedEnvironmentVariable : public INonCopyable
{
public:
    ScopedEnvironmentVariable(std::wstring name, const std::wstring& value);
    ~ScopedEnvironmentVariable();

private:
    std::wstring m_name;
    std::wstring m_formerValue;
};

/// Gives the process its own per-user folder, initially empty.
class ScopedUserFolder : public INonCopyable
{
public:
    /// Folder for application data, with trailing separator.
    const std::wstring& GetPath() const noexcept { return m_folder.GetPath(); }

    /// Writes the file with the history of data directories and creates its folders.
    void WriteLastConfig(std::string_view bytes) const;

private:
    ScopedFolder m_folder;
    // Each platform reads one of these variables.
    ScopedEnvironmentVariable m_linux{L"XDG_DATA_HOME", m_folder.GetPath()};
    ScopedEnvironmentVariable m_windows{L"APPDATA", m_folder.GetPath()};
};

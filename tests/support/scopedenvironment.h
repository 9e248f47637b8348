/// Environment variables of one test.
#pragma once

#include <string>

#include "base/inoncopyable.h"
#include "tests/support/scopedfolder.h"

/// Sets an environment variable of the process and restores its former value at the end of the scope. One thread at a
/// time, while no other thread reads the environment.
class ScopedEnvironmentVariable : public INonCopyable
{
public:
    ScopedEnvironmentVariable(std::wstring name, const std::wstring& value);
    ~ScopedEnvironmentVariable();

private:
    std::wstring m_name;
    std::wstring m_formerValue;
};

/// Gives the process a per-user folder of its own, empty at first.
class ScopedUserFolder : public INonCopyable
{
public:
    /// Folder of the user's programs, with separator at its end.
    const std::wstring& GetPath() const noexcept { return m_folder.GetPath(); }

    /// Writes the file that remembers the data directories; the folders to it are created.
    void WriteLastConfig(std::string_view bytes) const;

private:
    ScopedFolder m_folder;
    // Each platform reads its own one of the two.
    ScopedEnvironmentVariable m_linux{L"XDG_DATA_HOME", m_folder.GetPath()};
    ScopedEnvironmentVariable m_windows{L"APPDATA", m_folder.GetPath()};
};

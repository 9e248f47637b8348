/// A test program under a name of its own.
#pragma once

#include <string>

#include "base/inoncopyable.h"
#include "base/os/platform.h"
#include "tests/support/binaryfolder.h"

/// Copies a program of the build, within its folder, where it finds its libraries; removes the copy at the end of the
/// scope. The names are without ending, of ASCII characters.
class ProgramCopy : public INonCopyable
{
public:
    ProgramCopy(const std::wstring& program, const std::wstring& name)
        : m_fileName(name + LbOs::c_ExecutableSuffix), m_path(GetBinaryFolder() + m_fileName)
    {
        std::filesystem::copy_file(std::filesystem::path(GetBinaryFolder() + program + LbOs::c_ExecutableSuffix),
                                   std::filesystem::path(m_path));
    }

    ~ProgramCopy()
    {
        // One that runs still cannot be removed on every platform.
        std::error_code error;
        std::filesystem::remove(std::filesystem::path(m_path), error);
    }

    const std::wstring& GetFileName() const { return m_fileName; }
    const std::wstring& GetPath() const { return m_path; }

private:
    std::wstring m_fileName;
    std::wstring m_path;
};

/// A test program under a name of its own.
#pragma once

#include <string>

#include "base/inoncopyable.h"

/// Copies a program of the build, within its folder, where it finds its libraries; removes the copy at the end of the
/// scope. The names are without ending, of ASCII characters.
class ProgramCopy : public INonCopyable
{
public:
    ProgramCopy(const std::wstring& program, const std::wstring& name);
    ~ProgramCopy();

    const std::wstring& GetFileName() const { return m_fileName; }
    const std::wstring& GetPath() const { return m_path; }

private:
    std::wstring m_fileName;
    std::wstring m_path;
};

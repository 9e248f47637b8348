/// A copy of a test program under another name.
#pragma once

#include <string>

#include "base/inoncopyable.h"

/// Copies a program of the build within the program's folder, where the copy finds its libraries. The destructor
/// removes the copy. Names have no extension and consist of ASCII characters.
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

#include "tests/support/programcopy.h"

#include <filesystem>

#include "base/os/platform.h"
#include "tests/support/binaryfolder.h"

ProgramCopy::ProgramCopy(const std::wstring& program, const std::wstring& name)
    : m_fileName(name + LbOs::c_ExecutableSuffix), m_path(GetBinaryFolder() + m_fileName)
{
    std::filesystem::copy_file(std::filesystem::path(GetBinaryFolder() + program + LbOs::c_ExecutableSuffix),
                               std::filesystem::path(m_path));
}

ProgramCopy::~ProgramCopy()
{
    // Ignores the error, because some platforms cannot remove a running program.
    std::error_code error;
    std::filesystem::remove(std::filesystem::path(m_path), error);
}

#include "tests/support/programcopy.h"

#include <filesystem>

#include "base/lbpath.h"

namespace
{

std::wstring getFolder()
{
    return LbPath::ToNative(L"" LUTESTSUITE_BIN_DIR "/");
}

} // namespace

ProgramCopy::ProgramCopy(const std::wstring& program, const std::wstring& name)
    : m_fileName(name + LbOs::c_ExecutableSuffix), m_path(getFolder() + m_fileName)
{
    std::filesystem::copy_file(std::filesystem::path(getFolder() + program + LbOs::c_ExecutableSuffix),
                               std::filesystem::path(m_path));
}

ProgramCopy::~ProgramCopy()
{
    // One that runs still cannot be removed on every platform.
    std::error_code error;
    std::filesystem::remove(std::filesystem::path(m_path), error);
}

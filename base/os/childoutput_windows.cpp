#include "base/os/childoutput.h"

#include <algorithm>
#include <utility>

#include "base/os/files.h"
#include "base/os/windows/api.h"

namespace LbOs
{

struct CChildOutput::SState
{
    std::wstring path;
    Windows::Handle file;
};

CChildOutput::CChildOutput(std::unique_ptr<SState> state) : m_state(std::move(state)) {}

std::unique_ptr<CChildOutput> CChildOutput::Create(const std::wstring& name)
{
    auto state = std::make_unique<SState>();
    state->path = GetTemporaryDirectory() + L"\\" + name;
    // The system removes the file with the last handle, even if the process is killed.
    const HANDLE file = CreateFileW(Windows::ToSystemPath(state->path).c_str(), GENERIC_READ | GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE)
    {
        return nullptr;
    }
    state->file.reset(file);
    return std::unique_ptr<CChildOutput>(new CChildOutput(std::move(state)));
}

CChildOutput::~CChildOutput() = default;

const std::wstring& CChildOutput::GetPath() const noexcept
{
    return m_state->path;
}

std::uint64_t CChildOutput::GetSize() const
{
    LARGE_INTEGER size = {};
    return GetFileSizeEx(m_state->file.get(), &size) != FALSE ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

std::string CChildOutput::ReadEnd(std::uint64_t begin, std::size_t most) const
{
    const std::uint64_t end = GetSize();
    LARGE_INTEGER position = {};
    position.QuadPart = static_cast<LONGLONG>(std::max(begin, end > most ? end - most : 0));
    const auto first = static_cast<std::uint64_t>(position.QuadPart);
    std::string bytes(first < end ? static_cast<std::size_t>(end - first) : 0, '\0');
    DWORD count = 0;
    const bool isRead =
        SetFilePointerEx(m_state->file.get(), position, nullptr, FILE_BEGIN) != FALSE &&
        ReadFile(m_state->file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) != FALSE;
    bytes.resize(isRead ? count : 0);
    return bytes;
}

void CChildOutput::Clear()
{
    if (SetFilePointerEx(m_state->file.get(), LARGE_INTEGER{}, nullptr, FILE_BEGIN) != FALSE)
    {
        SetEndOfFile(m_state->file.get());
    }
}

} // namespace LbOs

#include "base/os/childoutput.h"

#include <algorithm>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/lbencoding.h"
#include "base/os/files.h"
#include "base/os/linux/descriptor.h"
#include "base/os/linux/namedfile.h"

namespace LbOs
{

struct CChildOutput::SState
{
    std::wstring path;
    std::string nativePath;
    Linux::CNamedFile file;
    Linux::CDescriptor descriptor;
    dev_t device = 0;
    ino_t node = 0;

    /// True if `status` describes this file. A test may close all descriptors; the number of this one may then belong
    /// to another file.
    bool IsOwn(const struct stat& status) const { return status.st_dev == device && status.st_ino == node; }
};

CChildOutput::CChildOutput(std::unique_ptr<SState> state) : m_state(std::move(state)) {}

std::unique_ptr<CChildOutput> CChildOutput::Create(const std::wstring& name)
{
    auto state = std::make_unique<SState>();
    state->path = GetTemporaryDirectory() + L"/" + name;
    state->nativePath = LbEncoding::ToNative(state->path);
    state->file = Linux::CNamedFile(state->nativePath, nullptr, [&state](const char* path) {
        constexpr mode_t c_OwnUserOnly = 0600;
        state->descriptor =
            Linux::AboveStandard(open(path, O_RDONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, c_OwnUserOnly));
        return state->descriptor.IsOpen();
    });
    struct stat status = {};
    if (!state->file.Exists() || fstat(state->descriptor.Get(), &status) != 0)
    {
        return nullptr;
    }
    state->device = status.st_dev;
    state->node = status.st_ino;
    return std::unique_ptr<CChildOutput>(new CChildOutput(std::move(state)));
}

CChildOutput::~CChildOutput()
{
    struct stat status = {};
    if (fstat(m_state->descriptor.Get(), &status) != 0 || !m_state->IsOwn(status))
    {
        m_state->descriptor.Release();
    }
}

const std::wstring& CChildOutput::GetPath() const noexcept
{
    return m_state->path;
}

std::uint64_t CChildOutput::GetSize() const
{
    struct stat status = {};
    const bool isKnown = (fstat(m_state->descriptor.Get(), &status) == 0 && m_state->IsOwn(status)) ||
                         (stat(m_state->nativePath.c_str(), &status) == 0 && m_state->IsOwn(status));
    return isKnown ? static_cast<std::uint64_t>(status.st_size) : 0;
}

std::string CChildOutput::ReadEnd(std::uint64_t begin, std::size_t most) const
{
    const std::uint64_t end = GetSize();
    const Linux::CDescriptor file(open(m_state->nativePath.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    std::uint64_t position = std::max(begin, end > most ? end - most : 0);
    std::string bytes(position < end ? static_cast<std::size_t>(end - position) : 0, '\0');
    std::size_t size = 0;
    ssize_t count = 1;
    while (size < bytes.size() && count > 0)
    {
        count = Linux::Retry([&] {
            return pread(file.Get(), bytes.data() + size, bytes.size() - size, static_cast<off_t>(position + size));
        });
        size += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    bytes.resize(size);
    return bytes;
}

void CChildOutput::Clear()
{
    [[maybe_unused]] const int result = truncate(m_state->nativePath.c_str(), 0);
}

} // namespace LbOs

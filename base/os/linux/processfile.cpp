#include "base/os/linux/processfile.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>

namespace LbOs::Linux
{

namespace
{

/// True if the kernel's description of the descriptor names another process; false if there is no description.
bool isOfAnother(int file, pid_t process)
{
    const CDescriptor said(open(("/proc/self/fdinfo/" + std::to_string(file)).c_str(), O_RDONLY | O_CLOEXEC));
    char text[512] = {};
    if (!said.IsOpen() || Retry([&] { return read(said.Get(), text, sizeof(text) - 1); }) <= 0)
    {
        return false;
    }
    // The line lists the ids of the process from the outermost to the innermost namespace; the last one is its id in
    // its own namespace. -1: the process has ended and was waited for.
    const std::string_view all = text;
    const std::size_t last = all.rfind('\t');
    const long number = last == std::string_view::npos ? 0 : std::strtol(text + last, nullptr, 10);
    return number != process && number != -1;
}

bool isChild(int file)
{
    siginfo_t end = {};
    return waitid(P_PIDFD, static_cast<id_t>(file), &end, WEXITED | WNOHANG | WNOWAIT) == 0;
}

/// The kernel's pidfd_info, which the system headers do not have yet.
struct SProcessInfo
{
    std::uint64_t mask; ///< before the call the requested fields, after it the valid ones
    std::uint64_t controlGroup;
    std::uint32_t process;
    std::uint32_t threadGroup;
    std::uint32_t parent;
    std::uint32_t users[8];
    std::int32_t status;
};

static_assert(sizeof(SProcessInfo) == 64, "the size is a part of the request");

constexpr std::uint64_t c_ExitInfo = 8;
constexpr unsigned long c_GetInfo = _IOWR(0xFF, 11, SProcessInfo);

} // namespace

void CProcessFile::Ensure(pid_t process)
{
    releaseLost();
    if (m_file.IsOpen())
    {
        return;
    }
    m_process = process;
    CDescriptor file = AboveStandard(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
    if (file.IsOpen() && isChild(file.Get()))
    {
        keep(std::move(file));
    }
}

void CProcessFile::Adopt(pid_t process, int file)
{
    m_process = process;
    if (file >= 0 && !isOfAnother(file, process))
    {
        keep(AboveStandard(file));
    }
}

std::optional<int> CProcessFile::ReadStatus() const
{
    SProcessInfo info = {};
    info.mask = c_ExitInfo;
    const bool isKnown = m_file.IsOpen() && ioctl(m_file.Get(), c_GetInfo, &info) == 0 && (info.mask & c_ExitInfo) != 0;
    return isKnown ? std::optional<int>(info.status) : std::nullopt;
}

void CProcessFile::keep(CDescriptor file)
{
    struct stat status = {};
    if (fstat(file.Get(), &status) != 0)
    {
        file.Release();
        return;
    }
    m_file = std::move(file);
    m_device = status.st_dev;
    m_node = status.st_ino;
}

/// Older kernels use the same inode for all process descriptors, so both inode and process id are checked.
bool CProcessFile::isOwn() const
{
    struct stat status = {};
    return fstat(m_file.Get(), &status) == 0 && status.st_dev == m_device && status.st_ino == m_node &&
           !isOfAnother(m_file.Get(), m_process);
}

void CProcessFile::releaseLost()
{
    if (m_file.IsOpen() && !isOwn())
    {
        m_file.Release();
    }
}

} // namespace LbOs::Linux

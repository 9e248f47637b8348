#include "base/os/linux/processfile.h"

#include <cstdlib>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>

namespace LbOs::Linux
{

namespace
{

/// True if the kernel's description of the descriptor names another process. The description may be missing.
bool isOfAnother(int file, pid_t process)
{
    const CDescriptor said(open(("/proc/self/fdinfo/" + std::to_string(file)).c_str(), O_RDONLY | O_CLOEXEC));
    char text[512] = {};
    if (!said.IsOpen() || Retry([&] { return read(said.Get(), text, sizeof(text) - 1); }) <= 0)
    {
        return false;
    }
    // The line lists the ids from the outer to the inner namespace; the last one is the own id. -1: the process has
    // ended and was waited for.
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

} // namespace

void CProcessFile::Assert(pid_t process)
{
    releaseLost();
    if (m_file.IsOpen())
    {
        return;
    }
    m_process = process;
    m_file = AboveStandard(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
    struct stat status = {};
    if (!m_file.IsOpen() || fstat(m_file.Get(), &status) != 0 || !isChild(m_file.Get()))
    {
        m_file.Reset();
        return;
    }
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

#include "tests/support/os/filelimits.h"

#include <csignal>

#include <sys/resource.h>

namespace
{

/// If the signal is ignored, the write itself fails.
class CFileSizeLimit
{
public:
    explicit CFileSizeLimit(std::size_t size) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_former);
        const rlimit limit = {size, m_former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }

    ~CFileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_former);
        std::signal(SIGXFSZ, m_handler);
    }

    CFileSizeLimit(const CFileSizeLimit&) = delete;
    CFileSizeLimit& operator=(const CFileSizeLimit&) = delete;

private:
    void (*m_handler)(int);
    rlimit m_former = {};
};

} // namespace

std::shared_ptr<void> LbOs::LimitFileSize(std::size_t size)
{
    return std::make_shared<CFileSizeLimit>(size);
}

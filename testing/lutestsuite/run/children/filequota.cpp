#include "testing/lutestsuite/run/children/filequota.h"

#include <atomic>

#include "base/os/openfiles.h"

namespace LuTestSuiteRun
{

namespace
{

std::atomic<std::uint32_t> s_channelCount = 0;

} // namespace

CFileQuota::CFileQuota()
{
    constexpr std::uint64_t c_FilesPerChannel = 8; // One channel opens at most this number of files.
    constexpr std::uint64_t c_OtherFiles = 256;    // For cases that run in this process, and for other purposes.
    LbOs::EnsureOpenFiles(++s_channelCount * c_FilesPerChannel + c_OtherFiles);
}

CFileQuota::~CFileQuota()
{
    --s_channelCount;
}

std::uint32_t CFileQuota::CountChannels()
{
    return s_channelCount;
}

} // namespace LuTestSuiteRun

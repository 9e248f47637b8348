/// Raises the process's limit of open files for the channels to child processes.
#pragma once

#include <cstdint>

#include "base/inoncopyable.h"

namespace LuTestSuiteRun
{

/// Each channel has one object, which counts the channel and raises the limit of open files to what the channels of all
/// threads need together.
class CFileQuota : public INonCopyable
{
public:
    CFileQuota();
    ~CFileQuota();

    /// The number of existing channels of all threads.
    static std::uint32_t CountChannels();
};

} // namespace LuTestSuiteRun

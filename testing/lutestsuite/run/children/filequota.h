/// The open files that the channels to child processes need.
#pragma once

#include <cstdint>

#include "base/inoncopyable.h"

namespace LuTestSuiteRun
{

/// While it lives, counts a channel and provides the open files that the channels of all threads need.
class CFileQuota : public INonCopyable
{
public:
    CFileQuota();
    ~CFileQuota();

    /// Of all threads.
    static std::uint32_t CountChannels();
};

} // namespace LuTestSuiteRun

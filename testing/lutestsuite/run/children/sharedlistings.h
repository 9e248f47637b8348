/// Listings of data directories that a run shares with its child processes.
#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "base/inoncopyable.h"
#include "base/listingshare.h"
#include "base/os/sharedmemory.h"

namespace LuTestSuiteRun
{

/// Keeps the last few listings. A directory is shared once: after a later change, each child reads it itself. Any
/// thread.
class CSharedListings : public INonCopyable
{
public:
    /// Shares the listing of the directory as soon as it is certain that a child would notice each change. True if
    /// another call for this directory would do nothing.
    bool Share(const std::wstring& directory, EListingUse use);

private:
    using Clock = std::chrono::steady_clock;

    struct SDirectory
    {
        int left = 4;                  ///< attempts to share; 0 when it is shared
        Clock::time_point nextAttempt; ///< not before
    };

    std::mutex m_mutex; ///< guards all below
    std::map<std::wstring, SDirectory> m_directories;
    std::deque<std::unique_ptr<LbOs::CSharedMemory>> m_shared;
};

} // namespace LuTestSuiteRun

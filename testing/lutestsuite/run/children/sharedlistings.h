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

/// Shares listings and keeps the last few. Shares each directory only once: if it changes later, each child reads it
/// itself. Any thread.
class CSharedListings : public INonCopyable
{
public:
    /// Shares the listing of the directory, unless the directory has changed so recently that a child could miss
    /// another change. True if no further call for this directory with the same use is necessary.
    bool Share(const std::wstring& directory, EListingUse use);

private:
    using Clock = std::chrono::steady_clock;

    struct SDirectory
    {
        int left = 4;                  ///< number of remaining attempts; 0 if the directory needs no more
        Clock::time_point nextAttempt; ///< the next attempt is not made earlier
    };

    std::mutex m_mutex; ///< protects all members below
    std::map<std::wstring, SDirectory> m_directories;
    std::deque<std::unique_ptr<LbOs::CSharedMemory>> m_shared;
};

} // namespace LuTestSuiteRun

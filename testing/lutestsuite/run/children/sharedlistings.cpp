#include "testing/lutestsuite/run/children/sharedlistings.h"

namespace LuTestSuiteRun
{

bool CSharedListings::Share(const std::wstring& directory, EListingUse use)
{
    // Each listing needs a block of shared memory, and shared memory is limited. Older listings are not needed, because
    // cases run in the order of their directories.
    constexpr std::size_t c_Most = 16;
    constexpr std::chrono::milliseconds c_Pause(100);
    const std::lock_guard lock(m_mutex);
    SDirectory& state = m_directories[directory];
    const Clock::time_point now = Clock::now();
    if (state.left == 0 || now < state.nextAttempt)
    {
        return state.left == 0;
    }
    std::unique_ptr<LbOs::CSharedMemory> memory;
    const EListingShare share = LbShareListing(directory, use, memory);
    if (share == EListingShare::None && use == EListingUse::Possible)
    {
        // A later call with EListingUse::Certain may still share the listing.
        return true;
    }
    state.left = share == EListingShare::TooEarly ? state.left - 1 : 0;
    state.nextAttempt = now + c_Pause;
    if (memory)
    {
        m_shared.push_back(std::move(memory));
        if (m_shared.size() > c_Most)
        {
            m_shared.pop_front();
        }
    }
    return state.left == 0;
}

} // namespace LuTestSuiteRun

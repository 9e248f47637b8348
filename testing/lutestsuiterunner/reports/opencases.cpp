#include "testing/lutestsuiterunner/reports/opencases.h"

#include <algorithm>
#include <span>

#include "testing/lutestsuiterunner/journal/crashnotes.h"

namespace Runner
{

bool SOpenCases::Contains(std::uint32_t caseIndex) const
{
    return interrupted.contains(caseIndex) || std::ranges::binary_search(running, caseIndex) ||
           std::ranges::binary_search(canceled, caseIndex);
}

SOpenCases FindOpenCases(const CRunState& state, const std::wstring& folder, bool isInProgress)
{
    const bool isDistributed = state.GetPlan().partCount != 0 || state.GetPlan().part;
    const bool isOver = state.IsEnded() || state.IsCanceled();
    SOpenCases open;
    for (const std::uint32_t index : state.GetOpenCases())
    {
        if (isInProgress || (isDistributed && !isOver))
        {
            open.running.push_back(index);
            continue;
        }
        const std::uint32_t journal = state.GetAttempts(index).back().started.journal;
        open.interrupted.emplace(index, ReadCrashNote(folder, journal));
    }
    if (!isInProgress)
    {
        open.canceled = state.FindCases([&state](std::uint32_t index) {
            const std::span<const SAttempt> attempts = state.GetAttempts(index);
            return !attempts.empty() && attempts.back().IsEnded() && !attempts.back().IsFinished();
        });
    }
    return open;
}

} // namespace Runner

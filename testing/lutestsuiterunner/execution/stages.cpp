#include "testing/lutestsuiterunner/execution/stages.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "testing/lutestsuiterunner/execution/hostcrash.h"

namespace Runner
{

namespace
{

using Cases = std::vector<std::uint32_t>;

/// True if the case has failed so far, and this attempt is its next one or was interrupted.
bool isDueForAttempt(const CRunState& state, std::uint32_t index, std::size_t attempt)
{
    if (state.GetVerdict(index) != EVerdict::Failed)
    {
        return false;
    }
    const std::span<const SAttempt> attempts = state.GetAttempts(index);
    const bool isBrokenOff = attempts.size() == attempt && !attempts.back().IsFinished();
    const bool isNext = attempts.size() + 1 == attempt && attempts.back().IsFinished();
    return attempts.back().kind != EAttemptKind::Confirm && (isBrokenOff || isNext);
}

/// True if an earlier host has ended while it ran the case, so that the case might end this host, too. If that host
/// left no note, the attempt was repeated in a child process and describes how it ended there; then only `lostHosts`
/// shows that a host was lost.
bool hasEndedHost(const CRunState& state, std::uint32_t index)
{
    return std::ranges::any_of(state.GetAttempts(index), [](const SAttempt& attempt) {
        return attempt.lostHosts > 0 || (attempt.IsEnded() && attempt.result.end == EAttemptEnd::HostEnded);
    });
}

bool hasSharedProcess(const CRunState& state, std::uint32_t index)
{
    return !GetParams(state.GetPlan(), index).external || !state.GetPredecessors(*state.GetReported(index)).empty();
}

/// True for a case that has failed at its last retry, unless it has been confirmed.
bool isToBeConfirmed(const CRunState& state, std::uint32_t index, std::uint32_t retries)
{
    if (state.GetVerdict(index) != EVerdict::Failed)
    {
        return false;
    }
    const std::span<const SAttempt> attempts = state.GetAttempts(index);
    const SAttempt& last = attempts.back();
    const bool isDue =
        last.kind == EAttemptKind::Confirm ? !last.IsFinished() : last.IsFinished() && attempts.size() > retries;
    return isDue && hasSharedProcess(state, index);
}

constexpr std::uint32_t c_FirstRetry = 2;

bool hasCaseToRetry(const CRunState& state, std::uint32_t retries)
{
    for (std::uint32_t attempt = c_FirstRetry; attempt < c_FirstRetry + retries; ++attempt)
    {
        if (!state.FindCases([&](std::uint32_t index) { return isDueForAttempt(state, index, attempt); }).empty())
        {
            return true;
        }
    }
    return false;
}

Cases findCasesToConfirm(const CRunState& state, std::uint32_t retries)
{
    return state.FindCases([&](std::uint32_t index) { return isToBeConfirmed(state, index, retries); });
}

void retry(CSession& session, const CRunState& state, std::uint32_t attempt)
{
    Cases cases = state.FindCases([&](std::uint32_t index) { return isDueForAttempt(state, index, attempt); });
    const auto apart = std::stable_partition(cases.begin(), cases.end(),
                                             [&state](std::uint32_t index) { return !hasEndedHost(state, index); });
    session.Run({cases.begin(), apart}, EAttemptKind::Retry, EProcess::AsPlanned);
    session.Run({apart, cases.end()}, EAttemptKind::Retry, EProcess::Own);
}

bool isNothingLeft(const CRunState& state, const SStages& stages)
{
    return state.GetOpenCases().empty() && state.GetMissingCases().empty() && !hasCaseToRetry(state, stages.retries) &&
           (!stages.confirm || findCasesToConfirm(state, stages.retries).empty());
}

bool hasFinished(const CRunState& state, std::uint32_t index)
{
    const std::span<const SAttempt> attempts = state.GetAttempts(index);
    return !attempts.empty() && attempts.back().IsFinished();
}

bool contains(const Cases& cases, std::uint32_t index)
{
    return std::ranges::find(cases, index) != cases.end();
}

/// Runs first attempts, each suspect in its own process.
void runFirst(CSession& session, const Cases& suspects, Cases cases, const IsNeeded& isNeeded)
{
    const auto others = std::stable_partition(cases.begin(), cases.end(),
                                              [&suspects](std::uint32_t index) { return contains(suspects, index); });
    session.Run({cases.begin(), others}, EAttemptKind::First, EProcess::Own, isNeeded);
    session.Run({others, cases.end()}, EAttemptKind::First, EProcess::AsPlanned, isNeeded);
}

/// Removes from `cases` those that were running when an earlier host was canceled. Returns them in the order in which
/// they will run.
Cases takeCanceled(const CRunState& state, Cases& cases)
{
    Cases canceled = FindCanceled(state);
    std::erase_if(canceled, [&cases](std::uint32_t index) { return !contains(cases, index); });
    std::erase_if(cases, [&canceled](std::uint32_t index) { return contains(canceled, index); });
    return canceled;
}

} // namespace

bool IsComplete(const CRunState& state, const SStages& stages)
{
    return state.IsEnded() && !state.IsCanceled() && isNothingLeft(state, stages);
}

Cases FinishUnderWay(CSession& session, const CRunState& state, const std::wstring& folder)
{
    SUnderWay underWay = FindUnderWay(state, folder);
    for (const SCaseEnded& record : underWay.crashed)
    {
        session.End(record);
    }
    for (const std::uint32_t index : underWay.repeated)
    {
        session.Run({&index, 1}, EAttemptKind::First, EProcess::Own);
    }
    // Cases that ran in child processes run again with the other cases of their stage.
    return std::move(underWay.suspects);
}

void RunStages(CSession& session, const CRunState& state, const SFirstAttempts& first, const SStages& stages,
               CSiblings* siblings)
{
    Cases cases = first.suspects;
    std::ranges::copy_if(first.cases, std::back_inserter(cases), [&](std::uint32_t index) {
        return !hasFinished(state, index) && !contains(first.suspects, index);
    });
    if (siblings != nullptr)
    {
        Cases canceled = takeCanceled(state, cases);
        RunBesideSiblings(std::move(cases), *siblings, [&](const Cases& some, const IsNeeded& isNeeded) {
            runFirst(session, first.suspects, some, isNeeded);
        });
        RunBesideSiblings(std::move(canceled), *siblings, [&](const Cases& some, const IsNeeded& isNeeded) {
            session.Run(some, EAttemptKind::First, EProcess::Own, isNeeded);
        });
    }
    else
    {
        runFirst(session, first.suspects, cases, {});
    }
    for (std::uint32_t attempt = c_FirstRetry; attempt < c_FirstRetry + stages.retries && !session.IsCanceled();
         ++attempt)
    {
        retry(session, state, attempt);
    }
    if (stages.confirm)
    {
        session.Run(findCasesToConfirm(state, stages.retries), EAttemptKind::Confirm, EProcess::Own);
    }
    // The run counts as canceled only if cases are left to run.
    if (session.IsCanceled() && !isNothingLeft(state, stages))
    {
        session.NoteCancellation();
    }
}

} // namespace Runner

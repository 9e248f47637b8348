/// Cases with an attempt that has not ended, or that the cancellation of the run has ended.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

struct SOpenCases
{
    /// Cases whose host ended while it ran them, with the lines that this host printed when it crashed; a host that was
    /// killed printed none.
    std::map<std::uint32_t, std::wstring> interrupted;
    /// Cases that a host still runs, as far as the journals show; ascending.
    std::vector<std::uint32_t> running;
    /// Cases that ran in a child process until the run was canceled; ascending. Empty while a run is in progress.
    std::vector<std::uint32_t> canceled;

    bool Contains(std::uint32_t caseIndex) const;
};

/// `folder` is that of the run, with separator at its end. `isInProgress`: another process executes the run. Open cases
/// of a distributed run count as running until the run ends, because its hosts may be alive on other machines.
SOpenCases FindOpenCases(const CRunState& state, const std::wstring& folder, bool isInProgress);

} // namespace Runner

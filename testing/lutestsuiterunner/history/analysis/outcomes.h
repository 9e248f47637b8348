/// Findings about outcomes: failures with their beginning, and cases that change back and forth.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "testing/lutestsuiterunner/history/analysis/table.h"

namespace Runner::History
{

/// The beginning of a finding: the run `index`. If that is uncertain, for example because the case did not run before,
/// the finding may have begun at any run from `first` to `last`.
struct SBeginning
{
    std::size_t index = 0;
    std::size_t first = 0;
    std::size_t last = 0;
};

/// A case whose outcome changes without a change of the code.
struct SFlakiness
{
    std::uint32_t returns = 0; ///< how often its outcome changed and changed back
    std::uint32_t failures = 0;
    std::uint32_t runs = 0; ///< with a verdict
    bool isProven = false;  ///< it passed and failed with the same build
    SBeginning beginning;   ///< when its outcome first changed for a few runs
};

struct SOutcomeFindings
{
    std::optional<SBeginning> newFailure; ///< fails in the newest run, and has passed before or is new
    std::optional<SBeginning> fixed;      ///< passes in the newest run, and has failed before
    std::optional<SBeginning> missing;    ///< not in the newest run
    std::optional<SBeginning> notRun;     ///< in the newest run without an outcome
    std::optional<SBeginning> added;      ///< in the newest run, but not in the first ones
    std::optional<SFlakiness> flaky;

    bool IsEmpty() const { return !newFailure && !fixed && !missing && !notRun && !added && !flaky; }
};

SOutcomeFindings FindOutcomes(const CTable& table, std::size_t testCase);

} // namespace Runner::History

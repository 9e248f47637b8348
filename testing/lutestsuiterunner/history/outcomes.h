/// Findings about outcomes: what fails since when, and what changes back and forth.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "testing/lutestsuiterunner/history/table.h"

namespace Runner::History
{

/// Where something began: at the run `index`, or, if the case was not run in between, at an earlier one from `first`.
struct SBeginning
{
    std::size_t index = 0;
    std::size_t first = 0;
    std::size_t last = 0;
};

/// A case that is not to be relied on.
struct SFlakiness
{
    std::uint32_t returns = 0; ///< how often it left its outcome and came back
    std::uint32_t failures = 0;
    std::uint32_t runs = 0; ///< with a verdict
    bool isProven = false;  ///< it passed and failed with the same build
    SBeginning beginning;   ///< of the first departure
};

struct SOutcomeFindings
{
    std::optional<SBeginning> newFailure; ///< fails in the newest run, and has passed before
    std::optional<SBeginning> fixed;      ///< passes in the newest run, and has failed before
    std::optional<SBeginning> missing;    ///< not in the newest run
    std::optional<SBeginning> added;      ///< in the newest run, but not in the first ones
    std::optional<SFlakiness> flaky;

    bool IsEmpty() const { return !newFailure && !fixed && !missing && !added && !flaky; }
};

SOutcomeFindings FindOutcomes(const CTable& table, std::size_t testCase);

} // namespace Runner::History

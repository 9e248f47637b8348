/// The kinds of findings, with their names in JSON, page and gates.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "testing/lutestsuiterunner/history/analysis/analysis.h"

namespace Runner::History
{

struct SFindingKind
{
    const char* name;       ///< in JSON and in gates
    const wchar_t* title;   ///< German
    const wchar_t* meaning; ///< German, one sentence
    bool isBad;
    std::optional<SBeginning> (*get)(const SCaseFindings& findings); ///< empty if the case is not of the kind
};

/// All kinds, the most important first.
std::span<const SFindingKind> GetFindingKinds();

/// A finding of a kind.
struct SFinding
{
    const SCaseFindings* findings;
    SBeginning beginning;
};

/// The findings of a kind that may have begun in one of the newest `newest` runs; in any run if `newest` is 0.
std::vector<SFinding> GetFindings(const SAnalysis& analysis, const SFindingKind& kind, std::size_t newest);

} // namespace Runner::History

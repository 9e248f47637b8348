/// The changes of single lines in a hunk.
#pragma once

#include <vector>

#include "testing/lutestsuiterunner/review/difference.h"

namespace Runner
{

/// Splits a hunk into pairs, each of an old line and the new line that replaced it, and into the lines between pairs,
/// because neighbouring lines may have changed for different reasons. Lines with at least half of their words and
/// numbers in common are pairs, unless the hunk has very many lines. The lines between such pairs are paired in their
/// order if the numbers of old and new lines are equal. Returns the same hunk if it cannot be split.
std::vector<SHunk> PairLines(const SHunk& hunk);

} // namespace Runner

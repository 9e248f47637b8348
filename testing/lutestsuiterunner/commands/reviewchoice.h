/// What the options of "review" name.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuiterunner/review/changes.h"
#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

struct SReviewChoice
{
    std::vector<SChange> accepted; ///< no file twice as a whole
    std::vector<SChange> rejected;
};

/// The changes that --accept and --reject name. A file that is named itself is a change of its own, called by its path,
/// and is not in the others. "all" is what neither option names. Throws a German message as std::wstring if a value
/// names nothing or several changes, or if both options name the same.
SReviewChoice ChooseChanges(const std::vector<SChange>& changes, const SReviewOptions& options);

/// The changes of a reference, or of what was received in its place, each with this file alone. Empty if it has none.
std::vector<SChange> FindChangesOf(const std::vector<SChange>& changes, const std::wstring& path);

} // namespace Runner

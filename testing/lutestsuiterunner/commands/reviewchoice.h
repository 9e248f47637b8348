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
    std::vector<SChange> accepted; ///< no file is in two changes that cover it as a whole
    std::vector<SChange> rejected;
};

/// The changes that --accept and --reject name. A file that is named itself becomes a change named by its path and
/// leaves the other changes. "all" means what neither option names. Throws a German message as std::wstring if a value
/// names nothing, several changes or several files, or if both options name the same.
SReviewChoice ChooseChanges(const std::vector<SChange>& changes, const SReviewOptions& options);

/// The change whose name begins like this. Throws a German message as std::wstring if there is none, or several.
const SChange& FindChange(const std::vector<SChange>& changes, const std::wstring& digits);

/// The changes in the file of a reference or of its received output, each reduced to this file. A relative path counts
/// from the working directory or, as in the output, from the reviewed folder. Empty if there is no change. Throws a
/// German message as std::wstring if the path leads to a changed file from both folders.
std::vector<SChange> FindChangesOf(const std::vector<SChange>& changes, const std::wstring& directory,
                                   const std::wstring& path);

} // namespace Runner

/// The changes that the options of "review" name.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuiterunner/review/changes.h"
#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

struct SReviewChoice
{
    std::vector<SChange> accepted; ///< a file is in at most one change that decides on the whole file
    std::vector<SChange> rejected;
};

/// Returns the changes that --accept and --reject name. A file that is named by its path becomes a change of its own
/// with this path as its name, and is removed from the other chosen changes. "all" means everything that the other
/// option does not name. Throws a German message as std::wstring if a value names nothing, several changes or several
/// files, or if both options name the same change or file.
SReviewChoice ChooseChanges(const std::vector<SChange>& changes, const SReviewOptions& options);

/// The change whose checksum begins with these digits, at least six. Throws a German message as std::wstring if there
/// is none, or several.
const SChange& FindChange(const std::vector<SChange>& changes, const std::wstring& digits);

/// Returns the changes of one file, each reduced to this file; empty if there are none. `path` is that of the reference
/// or of its received file. A relative path may be relative to the working directory or, as in the output, to the
/// reviewed folder. Throws a German message as std::wstring if the path leads to a changed file from each of these two
/// folders, and the files differ.
std::vector<SChange> FindChangesOf(const std::vector<SChange>& changes, const std::wstring& directory,
                                   const std::wstring& path);

} // namespace Runner

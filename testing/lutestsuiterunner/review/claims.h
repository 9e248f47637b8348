/// The received files of a decision, moved to where runs do not change them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/review/changes.h"

namespace Runner
{

/// The path of the file that has changed since it was read: the reference or the received file. Empty if neither has.
/// `received` is the present path of the received file. Throws LbException if a file cannot be read.
std::wstring FindChanged(const SReceivedFile& file, const std::wstring& received);

/// Removes c_ClaimsFolder from `directory` if its decision has used all files in it.
void RemoveUsedClaims(const std::wstring& directory);

/// Moves "<reference>.received" of all files to a folder of the decision before the first reference changes. A run that
/// starts after an interruption then neither replaces nor removes them, and the decision can still be finished. The
/// caller must hold the lock of the folder.
class CClaims
{
public:
    /// `files` must outlive the object. `directory` has a final separator.
    CClaims(const std::wstring& directory, const std::vector<SReceivedFile>& files);

    /// Moves the files that an earlier process has not moved. Returns the path of the first file that has changed; the
    /// caller then releases all files. Throws LbException or a German message as std::wstring.
    std::wstring Claim() const;

    /// True if all files have been moved, by this process or an earlier one.
    bool AreComplete() const;

    /// The path of a moved file. There is no file at this path after Release, or after the decision has used it.
    std::wstring GetPath(std::size_t index) const;

    /// Moves a file back, unless a run has written a newer one.
    void Release(std::size_t index) const;

    /// Moves all files back.
    void ReleaseAll() const;

    /// Removes the folder.
    void Remove() const;

private:
    std::wstring m_directory;
    const std::vector<SReceivedFile>& m_files;
};

} // namespace Runner

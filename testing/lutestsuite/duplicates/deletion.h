/// Deletes duplicate data sets.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base/os/folderlock.h"
#include "testing/lutestsuite/duplicates/duplicatesets.h"
#include "testing/lutestsuite/duplicates/links.h"
#include "testing/lutestsuite/duplicates/placeuses.h"

namespace LuTestSuite
{

/// Deletes only redundant data sets. Never deletes a file that is kept, a place (see links.h) on the path of an
/// existing link, a file that has changed since it was compared, or a file that differs in any byte from the kept one.
/// Deletes nothing if some links may be unknown.
///
/// Checks and deletes each file under a lock of its unit test's folder: otherwise two concurrent deletions that keep
/// different files of a set could delete all files of the set. A folder that cannot be locked causes a warning.
class CDeletion
{
public:
    /// Examines all sets before anything is deleted: a file may be redundant in its own set but needed by a kept link
    /// of another set. Prints a line for each place that cannot be searched for links. The results must outlive the
    /// object.
    CDeletion(const std::vector<SDuplicates>& results, const std::wstring& dataDir);

    /// Deletes the redundant links, so that they no longer protect the places on their paths. Call before Delete.
    void DeleteLinks();

    /// Deletes a data set: a file or a link. True if it no longer exists; false if deletion failed or is forbidden.
    bool Delete(const SDataSet& dataSet, const SDataSet& kept);

private:
    std::wstring getOwnPlace(const SDataSet& dataSet) const;
    void lock(const std::wstring& folder);
    static bool mayGo(const SDataSet& dataSet, const SDataSet& kept);

    const std::vector<SDuplicates>& m_results;
    std::wstring m_dataDirectory; ///< spelled as in the paths of unit tests, with a trailing separator
    std::wstring m_canonicalDirectory;
    bool m_areLinksKnown = true;
    std::unordered_map<std::wstring, std::vector<std::wstring>> m_chains; ///< of the existing links, by place
    CPlaceUses m_uses;                                                    ///< places needed by links and kept data sets
    std::unordered_set<std::wstring> m_deleted;                           ///< paths
    std::wstring m_lockedFolder;
    std::unique_ptr<LbOs::CFolderLock> m_lock;   ///< null if the folder cannot be locked
    std::unordered_set<std::wstring> m_lockless; ///< folders that cannot be locked and have been reported
};

} // namespace LuTestSuite

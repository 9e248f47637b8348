/// Deleting data sets of which there are copies.
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

/// Deletes what is redundant and nothing else, however links lead from one place to another: no place that a link leads
/// through, as long as that link is there, and none that is kept, nor what has changed since it was compared, nor what
/// differs in any byte from the file that is kept. Nothing at all when some links may not be known.
///
/// Each file is checked and deleted under the lock of its unit test's folder: two deletions at once that keep different
/// files of a set would else both find the other's file in its place and delete it. A folder that takes no locks costs
/// a warning.
class CDeletion
{
public:
    /// Looks at all sets before anything is deleted: a file may be redundant in its own set and kept by another's link.
    /// Prints a line for each place that cannot be searched for links. The results are to live as long.
    CDeletion(const std::vector<SDuplicates>& results, const std::wstring& dataDir);

    /// Deletes the redundant links, so that what they led through is free. Before all else.
    void DeleteLinks();

    /// Deletes what is no link, too. True when the data set is away; false when that failed, or must not be.
    bool Delete(const SDataSet& dataSet, const SDataSet& kept);

private:
    std::wstring getOwnPlace(const SDataSet& dataSet) const;
    void lock(const std::wstring& folder);
    static bool mayGo(const SDataSet& dataSet, const SDataSet& kept);

    const std::vector<SDuplicates>& m_results;
    std::wstring m_dataDirectory; ///< as the paths of unit tests begin
    std::wstring m_canonicalDirectory;
    bool m_areLinksKnown = true;
    std::unordered_map<std::wstring, std::vector<std::wstring>> m_chains; ///< of the links that are there, by place
    CPlaceUses m_uses;                                                    ///< by links and kept data sets
    std::unordered_set<std::wstring> m_deleted;                           ///< paths
    std::wstring m_lockedFolder;
    std::unique_ptr<LbOs::CFolderLock> m_lock;   ///< null where there is none to be had
    std::unordered_set<std::wstring> m_lockless; ///< folders without locks, by now told
};

} // namespace LuTestSuite

#include "testing/lutestsuite/duplicates/deletion.h"

#include <optional>
#include <utility>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/os/files.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/output/warning.h"

namespace
{

using LuTestSuite::SDataSet;

/// Calls `visit(redundant, kept)` for each redundant data set.
template<typename F>
void visitRedundant(const std::vector<LuTestSuite::SDuplicates>& results, const F& visit)
{
    for (const LuTestSuite::SDuplicates& duplicates : results)
    {
        for (const LuTestSuite::DuplicateSet& set : duplicates.sets)
        {
            for (auto dataSet = set.begin() + 1; dataSet != set.end(); ++dataSet)
            {
                visit(*dataSet, set.front());
            }
        }
    }
}

/// True if the file was not written since it was examined: writing changes its size or its time. Does not compare the
/// number of names (hard links), because other names of the file may have been deleted.
bool isUnchanged(const SDataSet& dataSet)
{
    const std::optional<LbOs::SFileStatus> status = LbOs::GetFileStatus(dataSet.path);
    return status && status->identity == dataSet.status.identity && status->size == dataSet.status.size &&
           status->modificationTime == dataSet.status.modificationTime;
}

} // namespace

namespace LuTestSuite
{

CDeletion::CDeletion(const std::vector<SDuplicates>& results, const std::wstring& dataDir)
    : m_results(results), m_dataDirectory(LuTestSuiteUtils::AddBackslash(LbOs::GetFullPath(dataDir))),
      m_canonicalDirectory(LbPath::WithSeparator(LbOs::GetCanonicalPath(m_dataDirectory)))
{
    SLinks found = FindLinks(m_dataDirectory);
    for (const std::wstring& place : found.unreadPlaces)
    {
        WriteWarning(L"Fehler: %s konnte nicht gelesen werden, deshalb wird nichts gelöscht.\n", place);
        m_areLinksKnown = false;
    }
    for (SLink& link : found.links)
    {
        for (const std::wstring& place : link.chain)
        {
            m_uses.Add(place);
        }
        m_chains.emplace(std::move(link.place), std::move(link.chain));
    }
    for (const SDuplicates& duplicates : results)
    {
        for (const DuplicateSet& set : duplicates.sets)
        {
            m_uses.Add(LbOs::GetCanonicalPlace(set.front().path));
            m_uses.Add(LbOs::GetCanonicalPath(set.front().path));
        }
    }
}

void CDeletion::DeleteLinks()
{
    std::unordered_map<std::wstring, std::pair<const SDataSet*, const SDataSet*>> redundant;
    std::vector<std::wstring> pending;
    visitRedundant(m_results, [&](const SDataSet& dataSet, const SDataSet& kept) {
        const std::wstring place = getOwnPlace(dataSet);
        if (m_chains.contains(place))
        {
            redundant.emplace(place, std::pair(&dataSet, &kept));
            pending.push_back(place);
        }
    });
    while (!pending.empty())
    {
        const std::wstring place = std::move(pending.back());
        pending.pop_back();
        // A link on the path of another link is needed. Deleting that other link makes this one pending again.
        const auto link = m_uses.Has(place) ? redundant.end() : redundant.find(place);
        if (link == redundant.end())
        {
            continue;
        }
        const auto [dataSet, kept] = link->second;
        redundant.erase(link);
        const std::vector<std::wstring> chain = m_chains.at(place);
        if (Delete(*dataSet, *kept))
        {
            pending.insert(pending.end(), chain.begin(), chain.end());
        }
    }
}

bool CDeletion::Delete(const SDataSet& dataSet, const SDataSet& kept)
{
    if (m_deleted.contains(dataSet.path))
    {
        return true;
    }
    const std::wstring place = getOwnPlace(dataSet);
    if (!m_areLinksKnown || place.empty() || m_uses.Has(place))
    {
        return false;
    }
    lock(dataSet.unitTestPath);
    if (!mayGo(dataSet, kept) || !LbOs::RemoveFile(dataSet.path))
    {
        return false;
    }
    m_deleted.insert(dataSet.path);
    if (const auto link = m_chains.extract(place))
    {
        for (const std::wstring& used : link.mapped())
        {
            m_uses.Remove(used);
        }
    }
    return true;
}

/// Locks at most one folder at a time, so that two deletions never deadlock.
void CDeletion::lock(const std::wstring& folder)
{
    if (m_lockedFolder == folder)
    {
        return;
    }
    m_lock.reset();
    m_lock = LbOs::CFolderLock::Acquire(folder);
    m_lockedFolder = folder;
    if (!m_lock && m_lockless.insert(folder).second)
    {
        WriteWarning(L"Warnung: Ordner %s kann nicht gesperrt werden; nur eine Löschung darf darin arbeiten.\n",
                     folder);
    }
}

/// Compares contents first: afterwards the time shows whether the file was written during the comparison.
bool CDeletion::mayGo(const SDataSet& dataSet, const SDataSet& kept)
{
    return (LbOs::AreSameFile(dataSet.path, kept.path) || LbFileSystem::HaveSameContent(dataSet.path, kept.path)) &&
           isUnchanged(dataSet) && isUnchanged(kept);
}

/// The place of the data set. Empty if it does not belong to the data directory: it lies outside, or a folder between
/// the data directory and the data set is a link.
std::wstring CDeletion::getOwnPlace(const SDataSet& dataSet) const
{
    if (!dataSet.unitTestPath.starts_with(m_dataDirectory))
    {
        return {};
    }
    std::wstring place = LbOs::GetCanonicalPlace(dataSet.path);
    const std::wstring ownFolder = m_canonicalDirectory + dataSet.unitTestPath.substr(m_dataDirectory.size());
    return LbPath::GetParent(place) == ownFolder ? place : std::wstring();
}

} // namespace LuTestSuite

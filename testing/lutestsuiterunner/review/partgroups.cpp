#include "testing/lutestsuiterunner/review/partgroups.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <string>
#include <unordered_map>
#include <utility>

namespace Runner
{

namespace
{

using Files = std::vector<std::uint32_t>;

/// Disjoint sets of files (union-find), two of which can be merged. The first file of a set identifies the set.
class CConnections
{
public:
    explicit CConnections(std::size_t count) : m_parents(count) { std::iota(m_parents.begin(), m_parents.end(), 0U); }

    std::uint32_t Find(std::uint32_t file)
    {
        while (m_parents[file] != file)
        {
            m_parents[file] = m_parents[m_parents[file]];
            file = m_parents[file];
        }
        return file;
    }

    void Connect(std::uint32_t one, std::uint32_t other)
    {
        const auto [first, last] = std::minmax({Find(one), Find(other)});
        m_parents[last] = first;
    }

private:
    std::vector<std::uint32_t> m_parents;
};

/// One set of connected files with their parts, grouped in both ways: parts in the same files, files with the same
/// parts.
struct SConnected
{
    std::map<Files, PartNames> byFiles;
    std::map<PartNames, Files> byParts;
};

std::unordered_map<std::wstring, Files> findFilesOfParts(const std::vector<PartNames>& files)
{
    std::unordered_map<std::wstring, Files> filesOf;
    for (std::uint32_t file = 0; file < files.size(); ++file)
    {
        for (const std::wstring& part : files[file])
        {
            filesOf[part].push_back(file);
        }
    }
    return filesOf;
}

} // namespace

std::vector<SPartGroup> GroupByParts(const std::vector<PartNames>& files)
{
    const std::unordered_map<std::wstring, Files> filesOf = findFilesOfParts(files);
    CConnections connections(files.size());
    for (const auto& [part, members] : filesOf)
    {
        for (const std::uint32_t file : members)
        {
            connections.Connect(file, members.front());
        }
    }
    std::map<std::uint32_t, SConnected> connected;
    for (const auto& [part, members] : filesOf)
    {
        connected[connections.Find(members.front())].byFiles[members].insert(part);
    }
    for (std::uint32_t file = 0; file < files.size(); ++file)
    {
        connected[connections.Find(file)].byParts[files[file]].push_back(file);
    }
    std::vector<SPartGroup> groups;
    for (const auto& [first, both] : connected)
    {
        constexpr std::size_t c_TolerancePart = 10;
        if (both.byFiles.size() <= both.byParts.size() + both.byParts.size() / c_TolerancePart)
        {
            for (const auto& [members, parts] : both.byFiles)
            {
                groups.push_back({parts, members});
            }
            continue;
        }
        for (const auto& [parts, members] : both.byParts)
        {
            groups.push_back({parts, members});
        }
    }
    return groups;
}

} // namespace Runner

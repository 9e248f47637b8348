#include "testing/lutestsuiterunner/review/difference.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>

namespace Runner
{

namespace
{

using Lines = std::vector<std::string_view>;
using LineSpan = std::span<const std::string_view>;

/// The largest number of removed and added lines, counted together, that is searched for. Memory grows with its square.
constexpr std::ptrdiff_t c_MostEdits = 1000;

/// Finds the shortest edit script by Myers' greedy algorithm. Marks lines that are not in both texts.
class CEdits
{
public:
    CEdits(LineSpan old, LineSpan fresh)
        : m_old(old), m_fresh(fresh), m_isRemoved(old.size(), true), m_isAdded(fresh.size(), true)
    {
        if (search())
        {
            m_isRemoved.assign(m_old.size(), false);
            m_isAdded.assign(m_fresh.size(), false);
            trace();
        }
    }

    bool IsRemoved(std::size_t line) const { return m_isRemoved[line]; }
    bool IsAdded(std::size_t line) const { return m_isAdded[line]; }

private:
    using Place = std::ptrdiff_t;

    /// The row's entry for the diagonal (old - fresh): how far a path reaches on it.
    Place& reach(std::vector<Place>& row, Place diagonal) const
    {
        return row[static_cast<std::size_t>(diagonal + static_cast<Place>(row.size() / 2))];
    }

    bool comesFromAbove(std::vector<Place>& row, Place diagonal, Place edits) const
    {
        return diagonal == -edits || (diagonal != edits && reach(row, diagonal - 1) < reach(row, diagonal + 1));
    }

    /// Searches for the edit script; false if the script needs too many edits.
    bool search()
    {
        const auto oldSize = static_cast<Place>(m_old.size());
        const auto freshSize = static_cast<Place>(m_fresh.size());
        const Place most = std::min(oldSize + freshSize, c_MostEdits);
        std::vector<Place> row(3, 0);
        for (Place edits = 0; edits <= most; ++edits)
        {
            std::vector<Place> next(static_cast<std::size_t>(2 * edits + 3), 0);
            for (Place diagonal = -edits; diagonal <= edits; diagonal += 2)
            {
                Place old = edits == 0                             ? 0
                            : comesFromAbove(row, diagonal, edits) ? reach(row, diagonal + 1)
                                                                   : reach(row, diagonal - 1) + 1;
                while (old < oldSize && old - diagonal < freshSize &&
                       m_old[static_cast<std::size_t>(old)] == m_fresh[static_cast<std::size_t>(old - diagonal)])
                {
                    ++old;
                }
                reach(next, diagonal) = old;
                if (old >= oldSize && old - diagonal >= freshSize)
                {
                    m_edits = edits;
                    return true;
                }
            }
            m_rows.push_back(next);
            row = std::move(next);
        }
        return false;
    }

    /// Goes back from the end and marks the edits.
    void trace()
    {
        auto old = static_cast<Place>(m_old.size());
        auto fresh = static_cast<Place>(m_fresh.size());
        for (Place edits = m_edits; edits > 0; --edits)
        {
            std::vector<Place>& row = m_rows[static_cast<std::size_t>(edits - 1)];
            const Place diagonal = old - fresh;
            const bool isAddition = comesFromAbove(row, diagonal, edits);
            const Place before = reach(row, isAddition ? diagonal + 1 : diagonal - 1);
            if (isAddition)
            {
                fresh = before - (diagonal + 1);
                m_isAdded[static_cast<std::size_t>(fresh)] = true;
            }
            else
            {
                m_isRemoved[static_cast<std::size_t>(before)] = true;
                fresh = before - (diagonal - 1);
            }
            old = before;
        }
    }

    LineSpan m_old;
    LineSpan m_fresh;
    std::vector<bool> m_isRemoved;
    std::vector<bool> m_isAdded;
    std::vector<std::vector<Place>> m_rows;
    Place m_edits = 0;
};

std::vector<SHunk> makeHunks(LineSpan old, LineSpan fresh, std::size_t offset)
{
    const CEdits edits(old, fresh);
    std::vector<SHunk> hunks;
    std::size_t oldLine = 0;
    std::size_t freshLine = 0;
    while (oldLine < old.size() || freshLine < fresh.size())
    {
        SHunk hunk = {offset + oldLine + 1, offset + freshLine + 1, {}, {}};
        for (; oldLine < old.size() && edits.IsRemoved(oldLine); ++oldLine)
        {
            hunk.removed.push_back(old[oldLine]);
        }
        for (; freshLine < fresh.size() && edits.IsAdded(freshLine); ++freshLine)
        {
            hunk.added.push_back(fresh[freshLine]);
        }
        if (!hunk.removed.empty() || !hunk.added.empty())
        {
            hunks.push_back(std::move(hunk));
            continue;
        }
        ++oldLine;
        ++freshLine;
    }
    return hunks;
}

/// Number of equal elements at the beginning, and of equal ones at the end that do not overlap with them.
template<typename Sequence>
std::pair<std::size_t, std::size_t> countCommonEnds(const Sequence& old, const Sequence& fresh)
{
    const auto difference = std::ranges::mismatch(old, fresh);
    const std::size_t begin = static_cast<std::size_t>(difference.in1 - old.begin());
    const std::size_t most = std::min(old.size(), fresh.size()) - begin;
    std::size_t end = 0;
    while (end < most && old[old.size() - 1 - end] == fresh[fresh.size() - 1 - end])
    {
        ++end;
    }
    return {begin, end};
}

/// The bytes between the common beginning and the common end.
SHunk compareBytes(std::string_view old, std::string_view fresh)
{
    const auto [begin, end] = countCommonEnds(old, fresh);
    return {begin + 1,
            begin + 1,
            {old.substr(begin, old.size() - begin - end)},
            {fresh.substr(begin, fresh.size() - begin - end)}};
}

/// The kind of line ends in a text.
enum class EEnds
{
    None,
    Plain,    ///< "\n"
    Returned, ///< "\r\n"
    Mixed,
};

EEnds findEnds(std::string_view text)
{
    const auto lines = std::ranges::count(text, '\n');
    std::ptrdiff_t returns = 0;
    for (std::size_t place = text.find("\r\n"); place != std::string_view::npos; place = text.find("\r\n", place + 2))
    {
        ++returns;
    }
    return lines == 0 ? EEnds::None : returns == 0 ? EEnds::Plain : returns == lines ? EEnds::Returned : EEnds::Mixed;
}

std::string_view getEnd(EEnds ends)
{
    return ends == EEnds::Returned ? "\r\n" : "\n";
}

} // namespace

bool AreBytes(std::string_view reference, std::string_view received)
{
    return reference.find('\0') != std::string_view::npos || received.find('\0') != std::string_view::npos;
}

std::vector<std::string_view> SplitLines(std::string_view text, bool dropReturns)
{
    std::vector<std::string_view> lines;
    while (true)
    {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (dropReturns && end != std::string_view::npos && line.ends_with('\r'))
        {
            line.remove_suffix(1);
        }
        lines.push_back(line);
        if (end == std::string_view::npos)
        {
            return lines;
        }
        text.remove_prefix(end + 1);
    }
}

std::vector<SHunk> CompareLines(const std::vector<std::string_view>& old, const std::vector<std::string_view>& fresh)
{
    const auto [begin, end] = countCommonEnds(old, fresh);
    return makeHunks(LineSpan(old).subspan(begin, old.size() - begin - end),
                     LineSpan(fresh).subspan(begin, fresh.size() - begin - end), begin);
}

std::string_view FindIgnoredEnd(std::string_view reference, std::string_view received)
{
    const EEnds expected = findEnds(reference);
    const EEnds fresh = findEnds(received);
    const EEnds ends = expected == EEnds::None ? fresh : expected;
    if (ends == EEnds::Mixed || AreBytes(reference, received))
    {
        return {};
    }
    const bool areAllPlain = ends != EEnds::Returned && (fresh == EEnds::None || fresh == EEnds::Plain);
    return areAllPlain || SplitLines(reference, true) != SplitLines(received, true) ? getEnd(ends) : std::string_view();
}

SDifference FindDifference(std::string_view reference, std::string_view received)
{
    SDifference difference;
    difference.isBinary = AreBytes(reference, received);
    if (difference.isBinary)
    {
        difference.hunks.push_back(compareBytes(reference, received));
        return difference;
    }
    const bool areEndsIgnored = !FindIgnoredEnd(reference, received).empty();
    difference.hunks = CompareLines(SplitLines(reference, areEndsIgnored), SplitLines(received, areEndsIgnored));
    return difference;
}

bool HasIgnoredEnds(std::string_view reference, std::string_view received)
{
    const std::string_view ignored = FindIgnoredEnd(reference, received);
    const EEnds ends = findEnds(received);
    return !ignored.empty() && ends != EEnds::None && (ends == EEnds::Mixed || ignored != getEnd(ends));
}

} // namespace Runner

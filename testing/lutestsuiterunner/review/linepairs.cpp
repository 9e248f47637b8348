#include "testing/lutestsuiterunner/review/linepairs.h"

#include <algorithm>
#include <compare>
#include <cstddef>
#include <string_view>
#include <utility>

#include "testing/lutestsuiterunner/review/pieces.h"

namespace Runner
{

namespace
{

using Lines = std::vector<std::string_view>;

/// The largest product of the numbers of removed and added lines for which all lines are compared with each other.
constexpr std::size_t c_MostCompared = 400;

Lines cut(const Lines& lines, std::size_t begin, std::size_t end)
{
    return {lines.begin() + static_cast<std::ptrdiff_t>(begin), lines.begin() + static_cast<std::ptrdiff_t>(end)};
}

/// The words and numbers of each line, sorted.
std::vector<Pieces> findTexts(const Lines& lines)
{
    std::vector<Pieces> texts;
    for (const std::string_view line : lines)
    {
        Pieces pieces = SplitPieces(line);
        std::erase_if(pieces, [](std::string_view piece) { return !IsWord(piece) && !IsNumber(piece); });
        std::ranges::sort(pieces);
        texts.push_back(std::move(pieces));
    }
    return texts;
}

/// Number of words and numbers that two lines have in common; 0 if this is less than half of those of the longer line.
std::size_t getLikeness(const Pieces& one, const Pieces& other)
{
    std::size_t common = 0;
    for (auto left = one.begin(), right = other.begin(); left != one.end() && right != other.end();)
    {
        const auto order = *left <=> *right;
        common += order == 0 ? 1 : 0;
        left += order <= 0 ? 1 : 0;
        right += order >= 0 ? 1 : 0;
    }
    return 2 * common >= std::max(one.size(), other.size()) ? common : 0;
}

/// Pairs removed and added lines without changing their order, so that the pairs have as much as possible in common.
class CPairing
{
public:
    explicit CPairing(const SHunk& hunk)
        : m_width(hunk.added.size() + 1), m_likeness((hunk.removed.size() + 1) * m_width), m_best(m_likeness.size())
    {
        const std::vector<Pieces> removed = findTexts(hunk.removed);
        const std::vector<Pieces> added = findTexts(hunk.added);
        for (std::size_t old = removed.size(); old-- > 0;)
        {
            for (std::size_t fresh = added.size(); fresh-- > 0;)
            {
                const std::size_t place = old * m_width + fresh;
                m_likeness[place] = getLikeness(removed[old], added[fresh]);
                m_best[place] = std::max(
                    {m_best[place + m_width], m_best[place + 1], m_likeness[place] + m_best[place + m_width + 1]});
            }
        }
    }

    bool IsPair(std::size_t old, std::size_t fresh) const
    {
        const std::size_t place = old * m_width + fresh;
        return m_likeness[place] > 0 && m_best[place] == m_likeness[place] + m_best[place + m_width + 1];
    }

    /// For two lines that do not form a pair: true if the removed line can stay alone.
    bool IsRemovedAlone(std::size_t old, std::size_t fresh) const
    {
        const std::size_t place = old * m_width + fresh;
        return m_best[place] == m_best[place + m_width];
    }

private:
    std::size_t m_width;
    std::vector<std::size_t> m_likeness;
    std::vector<std::size_t> m_best; ///< what the best pairs from here to the end have in common
};

/// Adds a pair for each changed line. A hunk also contains equal lines if there were too many differences to find.
void addPairs(std::vector<SHunk>& pairs, const SHunk& hunk)
{
    for (std::size_t index = 0; index < hunk.removed.size(); ++index)
    {
        if (hunk.removed[index] != hunk.added[index])
        {
            pairs.push_back(
                {hunk.firstRemoved + index, hunk.firstAdded + index, {hunk.removed[index]}, {hunk.added[index]}});
        }
    }
}

/// Adds the lines before, between or after lines that are alike.
void addRest(std::vector<SHunk>& pairs, SHunk rest)
{
    if (rest.removed.size() == rest.added.size())
    {
        addPairs(pairs, rest);
    }
    else
    {
        pairs.push_back(std::move(rest));
    }
}

std::vector<SHunk> pairAlike(const SHunk& hunk)
{
    const CPairing pairing(hunk);
    std::vector<SHunk> pairs;
    std::size_t oldRest = 0;
    std::size_t freshRest = 0;
    const auto addUntil = [&](std::size_t old, std::size_t fresh) {
        addRest(pairs, {hunk.firstRemoved + oldRest, hunk.firstAdded + freshRest, cut(hunk.removed, oldRest, old),
                        cut(hunk.added, freshRest, fresh)});
        oldRest = old;
        freshRest = fresh;
    };
    std::size_t old = 0;
    std::size_t fresh = 0;
    while (old < hunk.removed.size() && fresh < hunk.added.size())
    {
        if (pairing.IsPair(old, fresh))
        {
            addUntil(old, fresh);
            addUntil(++old, ++fresh);
        }
        else
        {
            ++(pairing.IsRemovedAlone(old, fresh) ? old : fresh);
        }
    }
    addUntil(hunk.removed.size(), hunk.added.size());
    return pairs;
}

} // namespace

std::vector<SHunk> PairLines(const SHunk& hunk)
{
    const std::size_t compared = hunk.removed.size() * hunk.added.size();
    if (compared > 1 && compared <= c_MostCompared)
    {
        return pairAlike(hunk);
    }
    std::vector<SHunk> pairs;
    addRest(pairs, hunk);
    return pairs;
}

} // namespace Runner

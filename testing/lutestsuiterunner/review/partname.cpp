#include "testing/lutestsuiterunner/review/partname.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "base/lbreceivedfile.h"
#include "testing/lutestsuiterunner/review/pieces.h"

namespace Runner
{

namespace
{

using Texts = std::vector<std::string_view>;

/// Appends the length of the text and the text, so that texts that are appended one after another stay distinct.
void append(std::string& key, char kind, std::string_view text)
{
    key += kind + std::to_string(text.size()) + ":";
    key += text;
}

void append(std::string& key, const SHunk& hunk)
{
    for (const std::string_view text : hunk.removed)
    {
        append(key, '-', text);
    }
    for (const std::string_view text : hunk.added)
    {
        append(key, '+', text);
    }
}

std::string getWholeKey(const SHunk& hunk, bool isBinary)
{
    std::string key = isBinary ? "b" : "t";
    append(key, hunk);
    return key;
}

/// The unchanged pieces that become part of the key.
enum class EContext
{
    Nothing,
    Labels, ///< one word for each changed place
    Words,  ///< all but numbers
    All,
};

/// Sums over all changed places of a line.
struct SSums
{
    bool hasLost = false; ///< a place lost text other than white space
    bool hasGained = false;
    std::ptrdiff_t lostNumbers = 0;
    std::ptrdiff_t gainedNumbers = 0;
    bool areInPlace = true; ///< each place lost as many numbers as it gained
};

SSums sumUp(const std::vector<SHunk>& edits)
{
    SSums sums;
    for (const SHunk& edit : edits)
    {
        const std::ptrdiff_t lost = std::ranges::count_if(edit.removed, IsNumber);
        const std::ptrdiff_t gained = std::ranges::count_if(edit.added, IsNumber);
        sums.hasLost = sums.hasLost || !std::ranges::all_of(edit.removed, IsSpace);
        sums.hasGained = sums.hasGained || !std::ranges::all_of(edit.added, IsSpace);
        sums.lostNumbers += lost;
        sums.gainedNumbers += gained;
        sums.areInPlace = sums.areInPlace && lost == gained;
    }
    return sums;
}

EContext chooseContext(const SSums& sums)
{
    if (!sums.hasLost && !sums.hasGained)
    {
        return EContext::Nothing;
    }
    if (sums.lostNumbers > 0 && sums.gainedNumbers > 0)
    {
        return sums.areInPlace ? EContext::Words : EContext::All;
    }
    const bool haveNumbersChanged = sums.lostNumbers > 0 || sums.gainedNumbers > 0;
    return haveNumbersChanged || (sums.hasLost && sums.hasGained) ? EContext::Words : EContext::Labels;
}

/// The first piece that is not white space; empty if all pieces are white space.
std::string_view getFirstText(std::span<const std::string_view> pieces)
{
    const auto first = std::ranges::find_if_not(pieces, IsSpace);
    return first == pieces.end() ? std::string_view() : *first;
}

/// The last piece that is not white space; empty if all pieces are white space.
std::string_view getLastText(std::span<const std::string_view> pieces)
{
    const auto last = std::find_if_not(pieces.rbegin(), pieces.rend(), IsSpace);
    return last == pieces.rend() ? std::string_view() : *last;
}

/// The unchanged pieces of the old line between two changed places.
struct SRun
{
    std::span<const std::string_view> pieces;
    const SHunk* before; ///< null at the beginning of the line
    const SHunk* after;  ///< null at its end
};

/// True if only white space is between this piece and a number that was removed or added: they may form one value.
bool isBesideNumber(const SRun& run, std::string_view piece)
{
    const bool isFirst = piece.data() == getFirstText(run.pieces).data();
    const bool isLast = piece.data() == getLastText(run.pieces).data();
    return (isFirst && run.before != nullptr &&
            (IsNumber(getLastText(run.before->removed)) || IsNumber(getLastText(run.before->added)))) ||
           (isLast && run.after != nullptr &&
            (IsNumber(getFirstText(run.after->removed)) || IsNumber(getFirstText(run.after->added))));
}

/// White space of any width counts as one blank, because its width often depends on the numbers in the line.
void appendWords(std::string& key, const SRun& run)
{
    for (const std::string_view piece : run.pieces)
    {
        if (IsNumber(piece) && !isBesideNumber(run, piece))
        {
            append(key, '#', {});
        }
        else
        {
            append(key, '=', IsSpace(piece) ? std::string_view(" ") : piece);
        }
    }
}

std::string getWordsKey(const Pieces& old, const std::vector<SHunk>& edits)
{
    std::string key = "w";
    SRun run = {{}, nullptr, nullptr};
    std::size_t place = 0;
    for (const SHunk& edit : edits)
    {
        run.pieces = std::span(old).subspan(place, edit.firstRemoved - 1 - place);
        run.after = &edit;
        appendWords(key, run);
        append(key, edit);
        run.before = &edit;
        place = edit.firstRemoved - 1 + edit.removed.size();
    }
    run.pieces = std::span(old).subspan(place);
    run.after = nullptr;
    appendWords(key, run);
    return key;
}

/// Joins each changed place with the last unchanged word before it or, if there is none, with the first one after it.
std::string getLabelsKey(const Pieces& old, const std::vector<SHunk>& edits)
{
    Pieces staying = old;
    for (const SHunk& edit : edits)
    {
        std::fill_n(staying.begin() + static_cast<std::ptrdiff_t>(edit.firstRemoved - 1), edit.removed.size(), " ");
    }
    std::string key = "l";
    for (const SHunk& edit : edits)
    {
        const auto [before, behind] = std::pair(std::span(staying).first(edit.firstRemoved - 1),
                                                std::span(staying).subspan(edit.firstRemoved - 1));
        const auto last = std::ranges::find_if(before.rbegin(), before.rend(), IsWord);
        const auto first = std::ranges::find_if(behind, IsWord);
        append(key, '=', last != before.rend() ? *last : first != behind.end() ? *first : std::string_view());
        append(key, edit);
    }
    return key;
}

std::string getSpaceKey(const std::vector<SHunk>& edits)
{
    std::string key = "s";
    for (const SHunk& edit : edits)
    {
        append(key, edit);
    }
    return key;
}

std::string getKindKey(const SHunk& hunk, bool isBinary)
{
    /// Limits the time that the comparison of two very different lines takes.
    constexpr std::size_t c_LongestLine = 1000;
    if (isBinary || hunk.removed.size() != 1 || hunk.added.size() != 1 ||
        std::max(hunk.removed.front().size(), hunk.added.front().size()) > c_LongestLine)
    {
        return getWholeKey(hunk, isBinary);
    }
    const Pieces old = SplitPieces(hunk.removed.front());
    const std::vector<SHunk> edits = CompareLines(old, SplitPieces(hunk.added.front()));
    switch (chooseContext(sumUp(edits)))
    {
    case EContext::Nothing:
        return getSpaceKey(edits);
    case EContext::Labels:
        return getLabelsKey(old, edits);
    case EContext::Words:
        return getWordsKey(old, edits);
    case EContext::All:
        break;
    }
    return getWholeKey(hunk, false);
}

} // namespace

std::wstring GetPartName(const SHunk& hunk, bool isBinary)
{
    return LbReceivedFile::GetChecksum(getWholeKey(hunk, isBinary));
}

std::wstring GetPartKind(const SHunk& hunk, bool isBinary)
{
    return LbReceivedFile::GetChecksum(getKindKey(hunk, isBinary));
}

} // namespace Runner

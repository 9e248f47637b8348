#include "testing/lutestsuiterunner/review/parts.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>

#include "base/lbencoding.h"
#include "base/lbreceivedfile.h"
#include "testing/lutestsuiterunner/review/linepairs.h"
#include "testing/lutestsuiterunner/review/partname.h"

namespace Runner
{

namespace
{

using Texts = std::vector<std::string_view>;

/// Joins all pairs of lines of the same kind into one part.
std::vector<SPart> splitKinds(const std::vector<SHunk>& pairs)
{
    std::map<std::wstring, SHunk> lines;
    std::map<std::wstring, std::vector<SHunk>> kinds;
    for (const SHunk& pair : pairs)
    {
        const std::wstring kind = GetPartKind(pair, false);
        SHunk& all = lines[kind];
        all.removed.insert(all.removed.end(), pair.removed.begin(), pair.removed.end());
        all.added.insert(all.added.end(), pair.added.begin(), pair.added.end());
        kinds[kind].push_back(pair);
    }
    std::vector<SPart> parts;
    for (auto& [kind, hunks] : kinds)
    {
        parts.push_back({GetPartName(lines[kind], false), kind, std::move(hunks)});
    }
    std::ranges::sort(parts, {}, [](const SPart& part) { return part.hunks.front().firstRemoved; });
    return parts;
}

/// The parts of a hunk; each can be accepted or rejected alone.
std::vector<SPart> split(const SHunk& hunk, bool isBinary)
{
    /// Limits the number of parts of a hunk in which very many lines have changed.
    constexpr std::size_t c_MostParts = 100;
    const std::vector<SHunk> pairs = isBinary ? std::vector<SHunk>{hunk} : PairLines(hunk);
    std::vector<SPart> parts;
    if (pairs.size() > c_MostParts)
    {
        parts = splitKinds(pairs);
    }
    else
    {
        for (const SHunk& pair : pairs)
        {
            parts.push_back({GetPartName(pair, isBinary), GetPartKind(pair, isBinary), {pair}});
        }
    }
    return parts.size() <= c_MostParts
               ? parts
               : std::vector<SPart>{{GetPartName(hunk, false), GetPartKind(hunk, false), {hunk}}};
}

/// True if at least one line of the reference that is not blank stays unchanged.
bool hasCommonText(std::string_view reference, const std::vector<SHunk>& hunks)
{
    Texts lines = SplitLines(reference, true);
    for (const SHunk& hunk : hunks)
    {
        std::fill_n(lines.begin() + static_cast<std::ptrdiff_t>(hunk.firstRemoved - 1), hunk.removed.size(),
                    std::string_view());
    }
    return !std::ranges::all_of(lines, IsBlank);
}

bool areAllChosen(const std::vector<SPart>& parts, const PartNames& chosen)
{
    return std::ranges::all_of(parts, [&chosen](const SPart& part) { return IsNamed(part, chosen); });
}

/// The hunks of the chosen parts, in the order of their lines.
std::vector<SHunk> getHunks(const std::vector<SPart>& parts, const PartNames& chosen)
{
    std::vector<SHunk> hunks;
    for (const SPart& part : parts)
    {
        if (IsNamed(part, chosen))
        {
            hunks.insert(hunks.end(), part.hunks.begin(), part.hunks.end());
        }
    }
    std::ranges::sort(hunks, {}, [](const SHunk& hunk) { return std::pair(hunk.firstRemoved, hunk.firstAdded); });
    return hunks;
}

std::string replaceLines(std::string_view reference, std::string_view received, const std::vector<SHunk>& hunks)
{
    const std::string_view keptEnd = FindIgnoredEnd(reference, received);
    const Texts oldLines = SplitLines(reference, !keptEnd.empty());
    const Texts newLines = SplitLines(received, !keptEnd.empty());
    Texts lines;
    std::size_t line = 0;
    const auto copy = [&lines](const Texts& source, std::size_t from, std::size_t to) {
        lines.insert(lines.end(), source.begin() + static_cast<std::ptrdiff_t>(from),
                     source.begin() + static_cast<std::ptrdiff_t>(to));
    };
    for (const SHunk& hunk : hunks)
    {
        copy(oldLines, line, hunk.firstRemoved - 1);
        copy(newLines, hunk.firstAdded - 1, hunk.firstAdded - 1 + hunk.added.size());
        line = hunk.firstRemoved - 1 + hunk.removed.size();
    }
    copy(oldLines, line, oldLines.size());
    const std::string_view end = keptEnd.empty() ? "\n" : keptEnd;
    std::string text;
    for (const std::string_view one : lines)
    {
        text += one;
        text += end;
    }
    // Removes the line end that the loop has appended to the last line.
    text.resize(text.size() - end.size());
    return text;
}

} // namespace

std::vector<SPart> FindParts(std::string_view reference, std::string_view received)
{
    const SDifference difference = FindDifference(reference, received);
    std::vector<SPart> parts;
    std::map<std::wstring, std::size_t> places;
    PartNames names;
    PartNames kinds;
    for (const SHunk& hunk : difference.hunks)
    {
        for (SPart& one : split(hunk, difference.isBinary))
        {
            const auto [place, isNew] = places.try_emplace(one.checksum, parts.size());
            names.insert(one.checksum);
            kinds.insert(one.kind);
            if (isNew)
            {
                parts.push_back(std::move(one));
                continue;
            }
            std::vector<SHunk>& hunks = parts[place->second].hunks;
            hunks.insert(hunks.end(), one.hunks.begin(), one.hunks.end());
        }
    }
    if (parts.size() == 1 || (!difference.isBinary && hasCommonText(reference, difference.hunks) && !parts.empty()))
    {
        return parts;
    }
    return {{GetChecksumOf(names), GetChecksumOf(kinds), difference.hunks}};
}

bool IsNamed(const SPart& part, const PartNames& names)
{
    return names.contains(part.checksum) || names.contains(part.kind);
}

std::wstring GetChecksumOf(const PartNames& parts)
{
    if (parts.size() == 1)
    {
        return *parts.begin();
    }
    std::wstring all;
    for (const std::wstring& part : parts)
    {
        all += part;
    }
    return LbReceivedFile::GetChecksum(LbEncoding::ToUtf8(all));
}

bool IsBlank(std::string_view bytes)
{
    for (const std::string_view mark : {"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"})
    {
        if (bytes.starts_with(mark))
        {
            bytes.remove_prefix(mark.size());
            // Every second byte of white space in UTF-16 is 0.
            constexpr std::string_view c_WideSpace("\0 \t\r\n\v\f", 7);
            return bytes.find_first_not_of(mark.size() == 2 ? c_WideSpace : c_WideSpace.substr(1)) ==
                   std::string_view::npos;
        }
    }
    return bytes.find_first_not_of(" \t\r\n\v\f") == std::string_view::npos;
}

std::string ApplyParts(std::string_view reference, std::string_view received, const PartNames& chosen)
{
    const std::vector<SPart> parts = FindParts(reference, received);
    if (areAllChosen(parts, chosen) && FindIgnoredEnd(reference, received).empty())
    {
        return std::string(received);
    }
    return replaceLines(reference, received, getHunks(parts, chosen));
}

} // namespace Runner

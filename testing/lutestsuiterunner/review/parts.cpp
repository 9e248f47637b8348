#include "testing/lutestsuiterunner/review/parts.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>

#include "base/lbencoding.h"
#include "base/lbreceivedfile.h"

namespace Runner
{

namespace
{

using Texts = std::vector<std::string_view>;

/// Texts with their lengths, so that the key tells where one ends.
void append(std::string& key, char kind, const Texts& texts)
{
    for (const std::string_view text : texts)
    {
        key += kind + std::to_string(text.size()) + ":";
        key += text;
    }
}

std::wstring getChecksum(const SHunk& hunk, bool isBinary)
{
    std::string key = isBinary ? "b" : "t";
    append(key, '-', hunk.removed);
    append(key, '+', hunk.added);
    return LbReceivedFile::GetChecksum(key);
}

/// Lines that replace as many others, one by one.
std::vector<SHunk> splitPairs(const SHunk& hunk)
{
    /// Limits the number of parts of files that have changed throughout.
    constexpr std::size_t c_MostPairs = 100;
    if (hunk.removed.size() != hunk.added.size() || hunk.removed.size() > c_MostPairs)
    {
        return {hunk};
    }
    std::vector<SHunk> pairs;
    for (std::size_t index = 0; index < hunk.removed.size(); ++index)
    {
        pairs.push_back(
            {hunk.firstRemoved + index, hunk.firstAdded + index, {hunk.removed[index]}, {hunk.added[index]}});
    }
    return pairs;
}

/// True if a line of the reference with text in it is in what was received, too.
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
    return std::ranges::all_of(parts, [&chosen](const SPart& part) { return chosen.contains(part.checksum); });
}

/// In their order.
std::vector<SHunk> getHunks(const std::vector<SPart>& parts, const PartNames& chosen)
{
    std::vector<SHunk> hunks;
    for (const SPart& part : parts)
    {
        if (chosen.contains(part.checksum))
        {
            hunks.insert(hunks.end(), part.hunks.begin(), part.hunks.end());
        }
    }
    std::ranges::sort(hunks, {}, [](const SHunk& hunk) { return std::pair(hunk.firstRemoved, hunk.firstAdded); });
    return hunks;
}

std::string replaceLines(std::string_view reference, std::string_view received, const std::vector<SHunk>& hunks)
{
    const Texts oldLines = SplitLines(reference, false);
    const Texts newLines = SplitLines(received, false);
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
    std::string text;
    for (const std::string_view one : lines)
    {
        text += one;
        text += '\n';
    }
    // The last line has no end of its own.
    text.pop_back();
    return text;
}

} // namespace

std::vector<SPart> FindParts(std::string_view reference, std::string_view received)
{
    const SDifference difference = FindDifference(reference, received);
    std::vector<SPart> parts;
    std::map<std::wstring, std::size_t> places;
    PartNames names;
    for (const SHunk& hunk : difference.hunks)
    {
        for (SHunk& one : difference.isBinary ? std::vector<SHunk>{hunk} : splitPairs(hunk))
        {
            std::wstring checksum = getChecksum(one, difference.isBinary);
            const auto [place, isNew] = places.try_emplace(checksum, parts.size());
            if (isNew)
            {
                names.insert(checksum);
                parts.push_back({std::move(checksum), {}});
            }
            parts[place->second].hunks.push_back(std::move(one));
        }
    }
    if (parts.size() == 1 || (!difference.isBinary && hasCommonText(reference, difference.hunks) && !parts.empty()))
    {
        return parts;
    }
    return {{GetChecksumOf(names), difference.hunks}};
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
            // Each second byte of white space in UTF-16.
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
    if (areAllChosen(parts, chosen))
    {
        return std::string(received);
    }
    return replaceLines(reference, received, getHunks(parts, chosen));
}

} // namespace Runner

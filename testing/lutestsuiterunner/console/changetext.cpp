#include "testing/lutestsuiterunner/console/changetext.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "base/lbencoding.h"
#include "base/lbformat.h"
#include "base/lbreceivedfile.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/review/difference.h"

namespace Runner
{

namespace
{

constexpr const wchar_t* c_Red = L"\x1b[31m";
constexpr const wchar_t* c_Green = L"\x1b[32m";
constexpr const wchar_t* c_Plain = L"\x1b[0m";

/// At most `most` characters.
std::wstring toLine(std::string_view bytes, std::size_t most)
{
    constexpr std::size_t c_BytesPerCharacter = 4;
    std::wstring text = ShowControls(LbEncoding::FromUtf8(bytes.substr(0, most * c_BytesPerCharacter)));
    if (text.size() > most)
    {
        text.replace(most - 1, std::wstring::npos, L"…");
    }
    return text;
}

std::wstring paint(const std::wstring& text, const wchar_t* colour, const SDiffStyle& style)
{
    return style.isColoured ? colour + text + c_Plain : text;
}

std::wstring showLines(const std::vector<std::string_view>& lines, wchar_t mark, const SDiffStyle& style,
                       std::size_t most)
{
    std::wstring text;
    for (std::size_t index = 0; index < std::min(lines.size(), most); ++index)
    {
        const wchar_t* const colour = mark == L'-' ? c_Red : c_Green;
        text += L"    " + paint(mark + toLine(lines[index], style.width), colour, style) + L"\n";
    }
    return lines.size() > most ? text + LbFormat(L"    %c... (%u Zeilen)\n", mark, lines.size()) : text;
}

std::wstring showSides(const SHunk& hunk, const SDiffStyle& style)
{
    constexpr std::wstring_view c_Middle = L" | ";
    const std::size_t half = (std::max<std::size_t>(style.width, 20) - c_Middle.size()) / 2;
    std::wstring text;
    for (std::size_t index = 0; index < std::max(hunk.removed.size(), hunk.added.size()); ++index)
    {
        std::wstring left = index < hunk.removed.size() ? toLine(hunk.removed[index], half) : L"";
        const std::wstring right = index < hunk.added.size() ? toLine(hunk.added[index], half) : L"";
        left.resize(half, L' ');
        text += paint(left, c_Red, style) + std::wstring(c_Middle) + paint(right, c_Green, style) + L"\n";
    }
    return text;
}

struct STexts
{
    std::string expected;
    std::string received;
};

STexts read(const SReceivedFile& file)
{
    return {file.earlier ? file.earlier->reference : ReadIfPresent(file.reference),
            ReadIfPresent(file.reference + LbReceivedFile::c_Suffix)};
}

/// The places of a change in a file.
struct SPlaces
{
    std::vector<SHunk> hunks;   ///< in their order
    std::size_t otherParts = 0; ///< of other changes, not accepted yet
};

SPlaces findPlaces(const SChange& change, const SReceivedFile& file, const STexts& texts)
{
    SPlaces places;
    for (const SPart& part : FindParts(texts.expected, texts.received))
    {
        if (change.parts.empty() || IsNamed(part, change.parts))
        {
            places.hunks.insert(places.hunks.end(), part.hunks.begin(), part.hunks.end());
        }
        else if (!file.earlier || !IsNamed(part, file.earlier->parts))
        {
            ++places.otherParts;
        }
    }
    std::ranges::sort(places.hunks, {},
                      [](const SHunk& hunk) { return std::pair(hunk.firstRemoved, hunk.firstAdded); });
    return places;
}

/// Joins adjacent hunks into one.
std::vector<SHunk> joinNeighbours(const std::vector<SHunk>& hunks)
{
    std::vector<SHunk> joined;
    for (const SHunk& hunk : hunks)
    {
        const bool isNeighbour = !joined.empty() &&
                                 joined.back().firstRemoved + joined.back().removed.size() == hunk.firstRemoved &&
                                 joined.back().firstAdded + joined.back().added.size() == hunk.firstAdded;
        if (!isNeighbour)
        {
            joined.push_back(hunk);
            continue;
        }
        joined.back().removed.insert(joined.back().removed.end(), hunk.removed.begin(), hunk.removed.end());
        joined.back().added.insert(joined.back().added.end(), hunk.added.begin(), hunk.added.end());
    }
    return joined;
}

std::wstring getName(const SReceivedFile& file, const std::wstring& directory)
{
    return ShowControls(file.reference.substr(directory.size()));
}

std::wstring describeKind(const SChange& change)
{
    std::wstring text = change.kind == EChange::New     ? L", neue Referenzen"
                        : change.kind == EChange::Blank ? L", Referenzen wären leer"
                                                        : L"";
    text += change.areLinesEqual ? L"" : L", Zeilen mit verschiedenen Werten";
    if (const std::size_t count = change.CountUnrepeated(); count > 0)
    {
        text += LbFormat(L", %u davon noch nicht in %u Läufen gleich", count, LbReceivedFile::c_EnoughRuns);
    }
    return text;
}

} // namespace

std::wstring FormatFileCount(std::size_t count)
{
    return count == 1 ? std::wstring(L"1 Datei") : LbFormat(L"%u Dateien", count);
}

std::wstring DescribeChange(const SChange& change, const std::wstring& directory, const SDiffStyle& style)
{
    std::wstring text =
        LbFormat(L"%s  %s%s: %s%s\n", change.id, FormatFileCount(change.files.size()), describeKind(change),
                 getName(change.files.front(), directory), change.files.size() == 1 ? L"" : L", ...");
    if (change.kind != EChange::Changed)
    {
        return text;
    }
    const STexts texts = read(change.files.front());
    const SPlaces places = findPlaces(change, change.files.front(), texts);
    if (places.hunks.empty())
    {
        return text + L"    kein Unterschied mehr\n";
    }
    const SHunk& hunk = places.hunks.front();
    return text + showLines(hunk.removed, L'-', style, 1) + showLines(hunk.added, L'+', style, 1);
}

std::wstring ShowDifference(const SChange& change, const SReceivedFile& file, const std::wstring& directory,
                            const SDiffStyle& style)
{
    constexpr std::size_t c_MostLines = 200;
    const STexts texts = read(file);
    const bool isBinary = AreBytes(texts.expected, texts.received);
    const SPlaces places = findPlaces(change, file, texts);
    std::wstring text = LbFormat(L"%s:\n", getName(file, directory));
    for (const SHunk& hunk : joinNeighbours(places.hunks))
    {
        text +=
            isBinary ? LbFormat(L"  ab Byte %u\n", hunk.firstRemoved) : LbFormat(L"  ab Zeile %u\n", hunk.firstRemoved);
        text += style.isSideBySide ? showSides(hunk, style)
                                   : showLines(hunk.removed, L'-', style, c_MostLines) +
                                         showLines(hunk.added, L'+', style, c_MostLines);
    }
    return places.otherParts > 0 ? text + LbFormat(L"  andere Änderungen dieser Datei: %u\n", places.otherParts) : text;
}

} // namespace Runner

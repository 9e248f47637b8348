#include "testing/lutestsuiterunner/console/changetext.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "base/lbformat.h"
#include "base/lbreceivedfile.h"
#include "base/lbvisibletext.h"
#include "testing/lutestsuiterunner/console/linetext.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/review/difference.h"

namespace Runner
{

namespace
{

constexpr const wchar_t* c_Red = L"\x1b[31m";
constexpr const wchar_t* c_Green = L"\x1b[32m";
constexpr const wchar_t* c_Plain = L"\x1b[0m";

std::wstring paint(const std::wstring& text, const wchar_t* colour, const SDiffStyle& style)
{
    return style.isColoured ? colour + text + c_Plain : text;
}

/// A removed line and an added line that are shown side by side.
struct SRow
{
    std::optional<std::string_view> removed;
    std::optional<std::string_view> added;
};

/// Neighbouring lines that differ.
struct SPlace
{
    std::size_t first; ///< number of the first removed line, or of the line before which lines were added
    std::vector<SRow> rows;
    std::size_t endRemoved; ///< numbers of the lines after the last removed and the last added line
    std::size_t endAdded;
};

/// The text of the removed or the added line of a row, cut at the same place as the other line.
std::wstring showLine(const SRow& row, bool isRemoved, std::size_t width)
{
    const std::string_view line = (isRemoved ? row.removed : row.added).value();
    return ShowLine(line, (isRemoved ? row.added : row.removed).value_or(line), width);
}

/// At most `most` of the removed or of the added lines.
std::wstring showLines(const SPlace& place, bool areRemoved, const SDiffStyle& style, std::size_t most)
{
    constexpr std::size_t c_IndentWidth = 5; // with the mark
    const std::size_t width = style.areLinesCut ? std::max(style.width, c_IndentWidth) - c_IndentWidth : c_AnyWidth;
    const wchar_t mark = areRemoved ? L'-' : L'+';
    std::wstring text;
    std::size_t count = 0;
    for (const SRow& row : place.rows)
    {
        if ((areRemoved ? row.removed : row.added) && ++count <= most)
        {
            text +=
                L"    " + paint(mark + showLine(row, areRemoved, width), areRemoved ? c_Red : c_Green, style) + L"\n";
        }
    }
    if (count <= most)
    {
        return text;
    }
    return text + (most == 1 ? LbFormat(L"    %c... (%u Zeilen)\n", mark, count)
                             : LbFormat(L"    %c... (%u Zeilen, alle mit '--side-by-side' oder in einer Pipe)\n", mark,
                                        count));
}

std::wstring showBoth(const SPlace& place, const SDiffStyle& style, std::size_t most)
{
    return showLines(place, true, style, most) + showLines(place, false, style, most);
}

std::wstring showSides(const SPlace& place, const SDiffStyle& style)
{
    constexpr std::wstring_view c_Middle = L" | ";
    const std::size_t half = (std::max<std::size_t>(style.width, 20) - c_Middle.size()) / 2;
    const std::size_t width = style.areLinesCut ? half : c_AnyWidth;
    std::wstring text;
    for (const SRow& row : place.rows)
    {
        std::wstring left = row.removed ? showLine(row, true, width) : L"";
        const std::wstring right = row.added ? showLine(row, false, width) : L"";
        left.resize(std::max(left.size(), half), L' ');
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

/// Joins adjacent hunks.
std::vector<SPlace> toPlaces(const std::vector<SHunk>& hunks)
{
    std::vector<SPlace> places;
    for (const SHunk& hunk : hunks)
    {
        if (places.empty() || places.back().endRemoved != hunk.firstRemoved ||
            places.back().endAdded != hunk.firstAdded)
        {
            places.push_back({hunk.firstRemoved, {}, 0, 0});
        }
        SPlace& place = places.back();
        for (std::size_t index = 0; index < std::max(hunk.removed.size(), hunk.added.size()); ++index)
        {
            SRow& row = place.rows.emplace_back();
            if (index < hunk.removed.size())
            {
                row.removed = hunk.removed[index];
            }
            if (index < hunk.added.size())
            {
                row.added = hunk.added[index];
            }
        }
        place.endRemoved = hunk.firstRemoved + hunk.removed.size();
        place.endAdded = hunk.firstAdded + hunk.added.size();
    }
    return places;
}

/// A change as it appears in one file.
struct SView
{
    std::vector<SPlace> places; ///< in ascending order
    std::size_t otherParts = 0; ///< number of parts that belong to other changes and are not accepted yet
};

SView findPlaces(const SChange& change, const SReceivedFile& file, const STexts& texts)
{
    SView view;
    std::vector<SHunk> hunks;
    for (const SPart& part : FindParts(texts.expected, texts.received))
    {
        if (change.parts.empty() || IsNamed(part, change.parts))
        {
            hunks.insert(hunks.end(), part.hunks.begin(), part.hunks.end());
        }
        else if (!file.earlier || !IsNamed(part, file.earlier->parts))
        {
            ++view.otherParts;
        }
    }
    std::ranges::sort(hunks, {}, [](const SHunk& hunk) { return std::pair(hunk.firstRemoved, hunk.firstAdded); });
    view.places = toPlaces(hunks);
    return view;
}

std::wstring getName(const SReceivedFile& file, const std::wstring& directory)
{
    return LbVisibleText::ShowControls(file.reference.substr(directory.size()));
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

std::wstring FormatTitle(const SChange& change, const std::wstring& directory)
{
    return LbFormat(L"%s  %s%s: %s%s\n", change.id, FormatFileCount(change.files.size()), describeKind(change),
                    getName(change.files.front(), directory), change.files.size() == 1 ? L"" : L", ...");
}

std::wstring FormatFiles(const SChange& change, const std::wstring& directory, const std::wstring& before)
{
    std::wstring text;
    for (const SReceivedFile& file : change.files)
    {
        text += before + getName(file, directory) + L"\n";
    }
    return text;
}

std::wstring FormatHeading(const SChange& change, const std::wstring& directory, const SDiffStyle& style)
{
    constexpr std::size_t c_MostFiles = 20;
    constexpr const wchar_t* c_Indent = L"  ";
    std::wstring text = FormatTitle(change, directory);
    if (change.files.size() == 1)
    {
        return text;
    }
    if (!style.areLinesCut || change.files.size() <= c_MostFiles)
    {
        return text + FormatFiles(change, directory, c_Indent);
    }
    SChange first = change;
    first.files.erase(first.files.begin() + c_MostFiles, first.files.end());
    return text + FormatFiles(first, directory, c_Indent) +
           LbFormat(L"  ... (%u weitere, alle mit '--files=%s')\n", change.files.size() - c_MostFiles, change.id);
}

std::wstring DescribeChange(const SChange& change, const std::wstring& directory, const SDiffStyle& style)
{
    std::wstring text = FormatTitle(change, directory);
    if (change.kind != EChange::Changed)
    {
        return text;
    }
    const STexts texts = read(change.files.front());
    const SView view = findPlaces(change, change.files.front(), texts);
    if (view.places.empty())
    {
        return text + L"    kein Unterschied mehr\n";
    }
    SDiffStyle cut = style;
    cut.areLinesCut = true;
    text += showBoth(view.places.front(), cut, 1);
    const std::size_t others = view.places.size() - 1;
    return others > 0 ? text + LbFormat(L"    weitere Stellen in dieser Datei: %u ('--diff' zeigt sie)\n", others)
                      : text;
}

std::wstring ShowDifference(const SChange& change, const SReceivedFile& file, const std::wstring& directory,
                            const SDiffStyle& style)
{
    constexpr std::size_t c_MostLines = 200;
    const std::size_t most = style.areLinesCut ? c_MostLines : std::numeric_limits<std::size_t>::max();
    const STexts texts = read(file);
    const bool isBinary = AreBytes(texts.expected, texts.received);
    const SView view = findPlaces(change, file, texts);
    SDiffStyle own = style;
    own.areLinesCut = style.areLinesCut || isBinary;
    std::wstring text = LbFormat(L"%s:\n", getName(file, directory));
    for (const SPlace& place : view.places)
    {
        text += isBinary ? LbFormat(L"  ab Byte %u\n", place.first) : LbFormat(L"  ab Zeile %u\n", place.first);
        text += style.isSideBySide ? showSides(place, own) : showBoth(place, own, most);
    }
    if (HasIgnoredEnds(texts.expected, texts.received))
    {
        text += L"  auch die Zeilenenden sind verschieden: sie bleiben, bis alle Zeilen übernommen sind\n";
    }
    return view.otherParts > 0 ? text + LbFormat(L"  andere Änderungen dieser Datei: %u\n", view.otherParts) : text;
}

} // namespace Runner

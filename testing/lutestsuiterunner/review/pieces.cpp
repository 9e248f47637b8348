#include "testing/lutestsuiterunner/review/pieces.h"

#include <algorithm>
#include <cstddef>

namespace Runner
{

namespace
{

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

bool isLetter(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') || character == '_' ||
           static_cast<unsigned char>(character) >= 0x80;
}

bool isOfWord(char character)
{
    return isDigit(character) || isLetter(character);
}

bool isWhiteSpace(char character)
{
    return std::string_view(" \t\r\v\f").find(character) != std::string_view::npos;
}

bool isHexadecimal(char character)
{
    return isDigit(character) || (character >= 'a' && character <= 'f') || (character >= 'A' && character <= 'F');
}

bool isSign(char character)
{
    return character == '-' || character == '+';
}

/// True if the character at `place`, such as the dot of "1.5", belongs to the number that begins at `begin`.
bool isInNumber(std::string_view line, std::size_t begin, std::size_t place)
{
    if (place == begin || place + 1 >= line.size() || !IsNumber(line.substr(begin, place - begin)))
    {
        return false;
    }
    const char before = line[place - 1];
    const char after = line[place + 1];
    if (line[place] == '.' || line[place] == '-')
    {
        return isOfWord(before) && isOfWord(after);
    }
    const bool isExponent = line[place] == '+' && (before == 'e' || before == 'E');
    return std::string_view(",:/'+").find(line[place]) != std::string_view::npos && (isDigit(before) || isExponent) &&
           isDigit(after);
}

/// The end of the word or number that begins at `begin`.
std::size_t findEnd(std::string_view line, std::size_t begin)
{
    std::size_t end = begin + 1;
    while (end < line.size() && (isOfWord(line[end]) || isInNumber(line, begin, end)))
    {
        ++end;
    }
    return end;
}

/// Length of the unit at the end of a number, such as "ms" in "12.5ms"; 0 if the number has no unit.
std::size_t getUnitSize(std::string_view text)
{
    const std::size_t begin =
        static_cast<std::size_t>(std::ranges::find_if(text.rbegin(), text.rend(), isDigit).base() - text.begin());
    const std::string_view unit = text.substr(begin);
    const bool isUnit = std::ranges::all_of(unit, isLetter) && !std::ranges::all_of(unit, isHexadecimal) &&
                        std::ranges::none_of(text.substr(0, begin), isLetter);
    return isUnit ? unit.size() : 0;
}

bool beginsNumber(std::string_view line, std::size_t place)
{
    return isSign(line[place]) && place + 1 < line.size() && isDigit(line[place + 1]) &&
           (place == 0 || !isOfWord(line[place - 1]));
}

} // namespace

Pieces SplitPieces(std::string_view line)
{
    Pieces pieces;
    std::size_t place = 0;
    while (place < line.size())
    {
        const std::size_t begin = place;
        if (isOfWord(line[begin]) || beginsNumber(line, begin))
        {
            place = findEnd(line, begin);
            const std::string_view text = line.substr(begin, place - begin);
            const std::size_t unit = IsNumber(text) ? getUnitSize(text) : 0;
            pieces.push_back(text.substr(0, text.size() - unit));
            if (unit > 0)
            {
                pieces.push_back(text.substr(text.size() - unit));
            }
            continue;
        }
        ++place;
        while (isWhiteSpace(line[begin]) && place < line.size() && isWhiteSpace(line[place]))
        {
            ++place;
        }
        pieces.push_back(line.substr(begin, place - begin));
    }
    return pieces;
}

bool IsNumber(std::string_view piece)
{
    return std::ranges::any_of(piece, isDigit);
}

bool IsWord(std::string_view piece)
{
    return isLetter(piece.front()) && !IsNumber(piece);
}

bool IsSpace(std::string_view piece)
{
    return isWhiteSpace(piece.front());
}

} // namespace Runner

#include "testing/lutestsuiterunner/history/reports/germantext.h"

#include <algorithm>
#include <iterator>

#include "base/lbencoding.h"
#include "base/lbformat.h"

namespace Runner::History
{

namespace
{

constexpr const char* c_Unknown = "�";

struct SUnit
{
    double size;
    const char* name;
};

/// Chooses the largest unit in which the number is at least one; prints three digits.
template<std::size_t Count>
std::string formatUnits(double value, const SUnit (&units)[Count])
{
    const SUnit* const unit = std::find_if(std::begin(units), std::end(units) - 1,
                                           [value](const SUnit& other) { return value >= other.size; });
    const double number = value / unit->size;
    const int decimals = number >= 100.0 ? 0 : number >= 10.0 ? 1 : 2;
    return FormatNumber(number, decimals) + " " + unit->name;
}

void addEscaped(std::string& markup, char character)
{
    switch (character)
    {
    case '&':
        markup += "&amp;";
        break;
    case '<':
        markup += "&lt;";
        break;
    case '>':
        markup += "&gt;";
        break;
    case '"':
        markup += "&quot;";
        break;
    default:
        const bool isControl = static_cast<unsigned char>(character) < ' ' && character != '\t' && character != '\n';
        markup += isControl ? std::string(c_Unknown) : std::string(1, character);
    }
}

} // namespace

std::string ToMarkup(std::wstring_view text)
{
    std::string markup;
    for (const char character : LbEncoding::ToUtf8(text))
    {
        addEscaped(markup, character);
    }
    return markup;
}

std::string FormatCount(std::uint64_t count)
{
    constexpr std::size_t c_Group = 3;
    std::string digits = std::to_string(count);
    for (std::size_t place = digits.size(); place > c_Group;)
    {
        place -= c_Group;
        digits.insert(place, 1, '.');
    }
    return digits;
}

std::string FormatNumber(double number, int decimals)
{
    std::string text = LbEncoding::ToUtf8(LbFormat(L"%.*f", decimals, number));
    std::ranges::replace(text, '.', ',');
    return text;
}

std::string FormatSeconds(double seconds)
{
    constexpr SUnit c_Units[] = {{3600.0, "h"}, {60.0, "min"}, {1.0, "s"}, {1e-3, "ms"}, {1e-6, "µs"}};
    return formatUnits(seconds, c_Units);
}

std::string FormatBytes(double bytes)
{
    constexpr SUnit c_Units[] = {{1e9, "GB"}, {1e6, "MB"}, {1e3, "kB"}, {1.0, "Bytes"}};
    return formatUnits(bytes, c_Units);
}

std::string FormatChange(double before, double after)
{
    if (before <= 0.0)
    {
        return "neu";
    }
    const double percent = (after / before - 1.0) * 100.0;
    return (percent >= 0.0 ? "+" : "−") + FormatNumber(percent >= 0.0 ? percent : -percent, 1) + " %";
}

} // namespace Runner::History

#include "testing/lutestsuite/selection/characterset.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <type_traits>

namespace
{

using LuTestSuite::CCharacterSet;
using LuTestSuite::CodeUnit;
using LuTestSuite::SCodeRange;

constexpr CodeUnit c_LastUnit = std::numeric_limits<std::make_unsigned_t<wchar_t>>::max();

struct SClassRange
{
    std::wstring_view className;
    wchar_t first;
    wchar_t last;
};

constexpr SClassRange c_ClassRanges[] = {
    {L"alnum", L'0', L'9'},  {L"alnum", L'A', L'Z'},  {L"alnum", L'a', L'z'},   {L"alpha", L'A', L'Z'},
    {L"alpha", L'a', L'z'},  {L"blank", L' ', L' '},  {L"blank", L'\t', L'\t'}, {L"cntrl", L'\0', L'\x1F'},
    {L"cntrl", 0x7F, 0x7F},  {L"digit", L'0', L'9'},  {L"d", L'0', L'9'},       {L"graph", L'!', L'~'},
    {L"lower", L'a', L'z'},  {L"print", L' ', L'~'},  {L"punct", L'!', L'/'},   {L"punct", L':', L'@'},
    {L"punct", L'[', L'`'},  {L"punct", L'{', L'~'},  {L"space", L'\t', L'\r'}, {L"space", L' ', L' '},
    {L"s", L'\t', L'\r'},    {L"s", L' ', L' '},      {L"upper", L'A', L'Z'},   {L"w", L'0', L'9'},
    {L"w", L'A', L'Z'},      {L"w", L'_', L'_'},      {L"w", L'a', L'z'},       {L"xdigit", L'0', L'9'},
    {L"xdigit", L'A', L'F'}, {L"xdigit", L'a', L'f'},
};

CCharacterSet makeAnyButLineEnds()
{
    CCharacterSet lineEnds;
    for (const wchar_t character : {L'\n', L'\r', L'\u2028', L'\u2029'})
    {
        lineEnds.Add(character, character);
    }
    return lineEnds.GetComplement();
}

} // namespace

std::optional<CCharacterSet> CCharacterSet::FromClassName(std::wstring_view name)
{
    CCharacterSet set;
    for (const SClassRange& range : c_ClassRanges)
    {
        if (range.className == name)
        {
            set.Add(range.first, range.last);
        }
    }
    return set.m_ranges.empty() ? std::nullopt : std::optional(std::move(set));
}

const CCharacterSet& CCharacterSet::GetAnyButLineEnds()
{
    static const CCharacterSet s_Set = makeAnyButLineEnds();
    return s_Set;
}

void CCharacterSet::Add(wchar_t first, wchar_t last)
{
    add({static_cast<CodeUnit>(first), static_cast<CodeUnit>(last)});
}

void CCharacterSet::Add(const CCharacterSet& other)
{
    for (const SCodeRange& range : other.m_ranges)
    {
        add(range);
    }
}

void CCharacterSet::add(const SCodeRange& range)
{
    SCodeRange joined = range;
    // Merges the ranges that touch the new one into it.
    const auto begin = std::ranges::find_if(
        m_ranges, [&](const SCodeRange& each) { return each.last >= joined.first || each.last + 1 == joined.first; });
    const auto end = std::find_if(begin, m_ranges.end(), [&](const SCodeRange& each) {
        return each.first > joined.last && each.first - 1 > joined.last;
    });
    if (begin != end)
    {
        joined.first = std::min(joined.first, begin->first);
        joined.last = std::max(joined.last, std::prev(end)->last);
    }
    m_ranges.insert(m_ranges.erase(begin, end), joined);
}

CCharacterSet CCharacterSet::GetComplement() const
{
    CCharacterSet complement;
    CodeUnit next = 0;
    for (const SCodeRange& range : m_ranges)
    {
        if (range.first > next)
        {
            complement.m_ranges.push_back({next, range.first - 1});
        }
        if (range.last == c_LastUnit)
        {
            return complement;
        }
        next = range.last + 1;
    }
    complement.m_ranges.push_back({next, c_LastUnit});
    return complement;
}

bool CCharacterSet::Contains(CodeUnit unit) const
{
    const auto range = std::ranges::lower_bound(m_ranges, unit, {}, &SCodeRange::last);
    return range != m_ranges.end() && range->first <= unit;
}

std::optional<wchar_t> CCharacterSet::GetOnlyMember() const
{
    if (m_ranges.size() != 1 || m_ranges[0].first != m_ranges[0].last)
    {
        return std::nullopt;
    }
    return static_cast<wchar_t>(m_ranges[0].first);
}

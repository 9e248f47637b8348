/// Sets of characters in an expression, stored as ranges of code units.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace LuTestSuite
{

/// A code unit of wide text: 16 bits on Windows, 32 bits on Linux.
using CodeUnit = std::uint32_t;

/// From `first` to `last`, both inclusive.
struct SCodeRange
{
    CodeUnit first = 0;
    CodeUnit last = 0;

    auto operator<=>(const SCodeRange&) const = default;
};

/// Ascending ranges that neither overlap nor touch, so that equal sets compare equal.
class CCharacterSet
{
public:
    CCharacterSet() = default;
    explicit CCharacterSet(wchar_t character) { Add(character, character); }

    /// The ASCII characters of the class with this name, such as "alpha" in "[[:alpha:]]". Empty optional for an
    /// unknown name.
    static std::optional<CCharacterSet> FromClassName(std::wstring_view name);

    /// The set of ".": all characters except the four line terminators.
    static const CCharacterSet& GetAnyButLineEnds();

    void Add(wchar_t first, wchar_t last);
    void Add(const CCharacterSet& other);

    CCharacterSet GetComplement() const;
    bool Contains(CodeUnit unit) const;

    /// The only member, if there is exactly one.
    std::optional<wchar_t> GetOnlyMember() const;

    const std::vector<SCodeRange>& GetRanges() const { return m_ranges; }

    auto operator<=>(const CCharacterSet&) const = default;

private:
    void add(const SCodeRange& range);

    std::vector<SCodeRange> m_ranges;
};

} // namespace LuTestSuite

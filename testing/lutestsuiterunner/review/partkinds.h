/// The kinds of the parts of changed files.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace Runner
{

/// A part without its lines.
struct SPartNames
{
    std::wstring checksum;
    std::wstring kind;
};

/// Finds the kinds whose parts all get one decision. The lines of these parts differ, because they contain values that
/// differ from file to file.
class CPartKinds
{
public:
    /// `part` must outlive the object.
    void Add(const SPartNames& part);

    bool AreOne(const std::wstring& kind) const;

private:
    struct SKind
    {
        std::unordered_set<std::wstring_view> variants; ///< checksums of parts
        std::size_t places = 0;                         ///< number of pairs of a file and a variant in it
    };

    std::unordered_map<std::wstring_view, SKind> m_kinds;
};

} // namespace Runner

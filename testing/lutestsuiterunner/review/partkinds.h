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

/// Which kinds of parts are decided on as one, because their lines have values of each file.
class CPartKinds
{
public:
    /// The part must outlive the object.
    void Add(const SPartNames& part);

    bool AreOne(const std::wstring& kind) const;

private:
    struct SKind
    {
        std::unordered_set<std::wstring_view> variants; ///< checksums of parts
        std::size_t places = 0;                         ///< files with one of them, each counted for each of them
    };

    std::unordered_map<std::wstring_view, SKind> m_kinds;
};

} // namespace Runner

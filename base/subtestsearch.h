/// Finds sub-tests of classes that override GetSubtestCount or GetSubtestName. Only for this library; see
/// subtesthints.h.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <typeinfo>

#include "base/lbfilelisting.h"

namespace LbSubtestSearch
{

/// The sub-tests of one object.
struct SSubtests
{
    const std::type_info& type;                          ///< of the object
    const std::wstring& directory;                       ///< its data directory
    const std::shared_ptr<const LbFileListing>& listing; ///< its data files; null if it has not requested them
    std::uint32_t count;
    std::function<std::wstring(std::uint32_t)> getName;
    std::optional<std::uint32_t> likely; ///< the index to try if none is remembered
};

/// Replaces the remembered names of the class and directory by those of all sub-tests of an object. If memory is short,
/// remembers only some of them. Passes on what getName throws. Any thread.
void Remember(const std::type_info& type, const std::wstring& directory, std::uint32_t count,
              const std::function<const std::wstring&(std::uint32_t)>& getName);

/// The remembered index of the name; empty if there is none. Compares hashes only, so the sub-test at this index may
/// have another name. Any thread.
std::optional<std::uint32_t> FindRemembered(const std::type_info& type, const std::wstring& directory,
                                            std::wstring_view name);

/// Finds the first sub-test with exactly this name. First tries the index that is remembered for this name, class and
/// directory, then the likely one; if the sub-tests there have other names, searches all. Returns a tried index even if
/// an earlier sub-test has the same name. Passes on what getName throws. Any thread.
///
/// If a search has read all names without success, later searches for unknown names fail at once, as long as the
/// objects have the same count and the same listing, on the assumption that names depend on nothing else.
std::optional<std::uint32_t> Find(const SSubtests& subtests, std::wstring_view name);

} // namespace LbSubtestSearch

/// The search for sub-tests of classes that name or count them themselves. Not for use outside of LbBase.
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
    const std::shared_ptr<const LbFileListing>& listing; ///< the files that it has asked for; null if it has not asked
    std::uint32_t count;
    std::function<std::wstring(std::uint32_t)> getName;
};

/// Finds the first sub-test with exactly this name. First tries the remembered index of the name for this class and
/// directory; if the name there differs, searches all. Misses an equal name inserted before one whose index and name
/// are unchanged. Passes on what getName throws. Any thread.
///
/// After all names were read once in vain, further missing names are not searched as long as the count is the same and
/// the objects have asked for the same listing: their names can only depend on it.
std::optional<std::uint32_t> Find(const SSubtests& subtests, std::wstring_view name);

} // namespace LbSubtestSearch

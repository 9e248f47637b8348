/// The search for sub-tests of classes that name or count them themselves. Not for use outside of LbBase.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <typeinfo>

namespace LbSubtestSearch
{

/// The sub-tests of one object.
struct SSubtests
{
    const std::type_info& type;    ///< of the object
    const std::wstring& directory; ///< its data directory
    std::uint32_t count;
    std::function<std::wstring(std::uint32_t)> getName;
};

/// Finds the first sub-test with exactly this name. First tries the remembered index of the name for this class and
/// directory; if the name there differs, searches all. Misses an equal name inserted before one whose index and name
/// are unchanged. Passes on what getName throws. Any thread.
std::optional<std::uint32_t> Find(const SSubtests& subtests, std::wstring_view name);

} // namespace LbSubtestSearch

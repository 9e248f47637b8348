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

/// The first sub-test of exactly that name. The process remembers at which index objects of the same class and
/// directory had each name, and asks for that one first; when it has another name by now, all are searched. Only a
/// sub-test that gets an equal name, in front of one that keeps its name and its index, is not found. Passes on what
/// getName throws. May be called from any thread.
std::optional<std::uint32_t> Find(const SSubtests& subtests, std::wstring_view name);

} // namespace LbSubtestSearch

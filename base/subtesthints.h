/// Passes the indices of sub-tests from discovery to the processes that run them. Not for use outside of the runner.
///
/// The library exports these functions instead of LbSubtestSearch, because base_tests links the object files of
/// LbSubtestSearch directly; see docs/architecture/overview.md.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <typeinfo>

#include "base/lbexport.h"

namespace LbSubtestHints
{

/// See LbSubtestSearch::Remember.
LB_API void Remember(const std::type_info& type, const std::wstring& directory, std::uint32_t count,
                     const std::function<const std::wstring&(std::uint32_t)>& getName);

/// See LbSubtestSearch::FindRemembered.
LB_API std::optional<std::uint32_t> Find(const std::type_info& type, const std::wstring& directory,
                                         std::wstring_view name);

} // namespace LbSubtestHints

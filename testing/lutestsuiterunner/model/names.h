/// The names of enumeration values in journals and in reports for programs. They must not change.
#pragma once

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>

#include "testing/lutestsuiterunner/model/records.h"
#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// Indexed by value.
inline constexpr std::string_view c_ResultNames[] = {
    "ok", "error", "exception", "no-input", "different", "unknown", "no-matching-case", "canceled", "time-out"};
inline constexpr std::string_view c_KindNames[] = {"first", "retry", "confirm"};
inline constexpr std::string_view c_EndNames[] = {"returned", "child-ended", "child-missing", "timed-out",
                                                  "canceled", "refused",     "host-ended"};
inline constexpr std::string_view c_VerdictNames[] = {"missing", "passed", "flaky", "failed", "failed-shared"};

inline std::span<const std::string_view> GetNames(LuTestSuiteRun::ECaseRunResult)
{
    return c_ResultNames;
}
inline std::span<const std::string_view> GetNames(EAttemptKind)
{
    return c_KindNames;
}
inline std::span<const std::string_view> GetNames(EAttemptEnd)
{
    return c_EndNames;
}
inline std::span<const std::string_view> GetNames(EVerdict)
{
    return c_VerdictNames;
}

/// Returns "unknown" for a value without a name, for example a result from a broken child process.
template<typename E>
std::string_view GetName(E value)
{
    const auto names = GetNames(value);
    const auto index = static_cast<std::size_t>(value);
    return index < names.size() ? names[index] : std::string_view("unknown");
}

template<typename E>
std::optional<E> FindValue(std::string_view name)
{
    const auto names = GetNames(E());
    const auto found = std::ranges::find(names, name);
    return found == names.end() ? std::nullopt : std::optional(static_cast<E>(found - names.begin()));
}

} // namespace Runner

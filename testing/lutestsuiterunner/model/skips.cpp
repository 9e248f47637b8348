#include "testing/lutestsuiterunner/model/skips.h"

#include <algorithm>
#include <string_view>

namespace Runner
{

namespace
{

constexpr std::wstring_view c_Skipped = L"INFO:  Übersprungen:";

/// Ignores the tabs by which the messages of a case are indented.
bool isAtBeginOfLine(std::wstring_view text, std::size_t position)
{
    while (position > 0 && text[position - 1] == L'\t')
    {
        --position;
    }
    return position == 0 || text[position - 1] == L'\n';
}

} // namespace

std::optional<std::wstring> FindSkipReason(const SAttempt& attempt)
{
    const std::wstring_view messages = attempt.result.info.messages;
    if (!attempt.HasPassed())
    {
        return std::nullopt;
    }
    for (std::size_t position = messages.find(c_Skipped); position != messages.npos;
         position = messages.find(c_Skipped, position + 1))
    {
        if (isAtBeginOfLine(messages, position))
        {
            const std::wstring_view rest = messages.substr(position + c_Skipped.size());
            const std::wstring_view line = rest.substr(0, rest.find(L'\n'));
            return std::wstring(line.substr(std::min(line.find_first_not_of(L' '), line.size())));
        }
    }
    return std::nullopt;
}

std::optional<std::wstring> FindSkipReason(const CRunState& state, std::uint32_t caseIndex)
{
    return state.GetVerdict(caseIndex) == EVerdict::Passed ? FindSkipReason(*state.GetReported(caseIndex))
                                                           : std::nullopt;
}

std::uint32_t CountSkipped(const CRunState& state)
{
    std::uint32_t count = 0;
    for (std::uint32_t index = 0; index < state.GetPlan().cases.size(); ++index)
    {
        count += !state.GetPlan().cases[index].isQuarantined && FindSkipReason(state, index) ? 1U : 0U;
    }
    return count;
}

} // namespace Runner

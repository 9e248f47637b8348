#include "testing/lutestsuiterunner/cluster/slurmtext.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <span>

#include "base/lbencoding.h"
#include "base/lbformat.h"

namespace Runner
{

namespace
{

std::vector<std::string_view> split(std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    while (true)
    {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
        {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

std::optional<std::uint32_t> readNumber(std::string_view text)
{
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// Shard, submission and restart.
using OutputNumbers = std::array<std::uint32_t, 3>;

std::optional<OutputNumbers> readOutputName(const std::wstring& name)
{
    constexpr std::string_view c_Ending = ".txt";
    const std::string text = LbEncoding::ToUtf8(name);
    const std::vector<std::string_view> parts = split(text, '-');
    OutputNumbers numbers{};
    if (parts.size() != 1 + numbers.size() || parts[0] != "shard" || !text.ends_with(c_Ending))
    {
        return std::nullopt;
    }
    for (std::size_t index = 0; index < numbers.size(); ++index)
    {
        const std::string_view part = parts[index + 1];
        const bool isLast = index + 1 == numbers.size();
        const auto number = readNumber(isLast ? part.substr(0, part.size() - c_Ending.size()) : part);
        if (!number)
        {
            return std::nullopt;
        }
        numbers[index] = *number;
    }
    return numbers;
}

bool isAny(std::string_view text, std::span<const std::string_view> names)
{
    return std::ranges::find(names, text) != names.end();
}

ETaskState getState(std::string_view state, std::string_view reason)
{
    constexpr std::string_view c_Waiting[] = {"PENDING",      "CONFIGURING", "REQUEUED", "REQUEUE_FED",
                                              "REQUEUE_HOLD", "SUSPENDED",   "STOPPED",  "RESV_DEL_HOLD"};
    constexpr std::string_view c_Running[] = {"RUNNING", "COMPLETING", "RESIZING", "SIGNALING", "STAGE_OUT"};
    // Slurm holds a task that it could not start or has requeued too often, until an administrator releases it.
    constexpr std::string_view c_Held[] = {"launch failed requeued held", "launch_failed_requeued_held",
                                           "JobHoldMaxRequeue"};
    if (isAny(reason, c_Held))
    {
        return ETaskState::Over;
    }
    return isAny(state, c_Waiting)   ? ETaskState::Waiting
           : isAny(state, c_Running) ? ETaskState::Running
                                     : ETaskState::Over;
}

/// True if the task waits for a reason that only a user or an administrator can resolve.
bool isStuck(ETaskState state, std::string_view reason)
{
    constexpr std::string_view c_Stuck[] = {"BadConstraints",
                                            "JobHeldAdmin",
                                            "JobHeldUser",
                                            "InvalidQOS",
                                            "PartitionTimeLimit",
                                            "PartitionNodeLimit",
                                            "DependencyNeverSatisfied"};
    return state == ETaskState::Waiting && isAny(reason, c_Stuck);
}

std::wstring describe(ETaskState state, std::string_view name, std::string_view reason, std::string_view node)
{
    const std::wstring place = LbEncoding::FromUtf8(node);
    const std::wstring text = LbEncoding::FromUtf8(name);
    switch (state)
    {
    case ETaskState::Running:
        return place;
    case ETaskState::Waiting:
        return reason == "None" ? text : LbEncoding::FromUtf8(reason);
    case ETaskState::Over:
        break;
    }
    return place.empty() ? text : LbFormat(L"%s auf %s", text, place);
}

} // namespace

std::map<std::uint32_t, std::wstring> FindNewestOutputs(const std::vector<std::wstring>& names)
{
    std::map<std::uint32_t, std::pair<OutputNumbers, std::wstring>> newest;
    for (const std::wstring& name : names)
    {
        if (const auto numbers = readOutputName(name))
        {
            auto& known = newest[numbers->front()];
            known = std::max(known, std::pair(*numbers, name));
        }
    }
    std::map<std::uint32_t, std::wstring> files;
    for (auto& [shard, file] : newest)
    {
        files[shard] = std::move(file.second);
    }
    return files;
}

std::wstring GetJobName(const std::string& runId, std::uint32_t submission)
{
    return LbFormat(L"lutestsuite-%s-%u", LbEncoding::FromUtf8(runId), submission);
}

bool IsOwnOption(const std::wstring& option)
{
    constexpr std::wstring_view c_Long[] = {L"--array", L"--clusters", L"--job-name", L"--wait"};
    constexpr std::wstring_view c_Short[] = {L"-a", L"-J", L"-M", L"-W"};
    if (!option.starts_with(L"--"))
    {
        return std::ranges::any_of(c_Short, [&option](std::wstring_view own) { return option.starts_with(own); });
    }
    const std::wstring name = option.substr(0, option.find(L'='));
    return std::ranges::any_of(c_Long, [&name](std::wstring_view own) { return own.starts_with(name); });
}

Tasks ReadQueue(std::string_view output)
{
    constexpr std::size_t c_Fields = 5;
    Tasks tasks;
    for (const std::string_view line : split(output, '\n'))
    {
        const std::vector<std::string_view> fields = split(line, '|');
        const auto shard = fields.size() == c_Fields && fields[0] == "task" ? readNumber(fields[1]) : std::nullopt;
        if (!shard)
        {
            continue;
        }
        const ETaskState state = getState(fields[2], fields[3]);
        const auto known = tasks.find(*shard);
        if (known == tasks.end() || known->second.state == ETaskState::Over)
        {
            tasks[*shard] = {state, describe(state, fields[2], fields[3], fields[4]), !fields[4].empty(),
                             isStuck(state, fields[3])};
        }
    }
    return tasks;
}

} // namespace Runner

#include "testing/lutestsuiterunner/cluster/slurmtext.h"

#include <algorithm>
#include <charconv>
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

bool isAny(std::string_view text, std::span<const std::string_view> names)
{
    return std::ranges::find(names, text) != names.end();
}

ETaskState getState(std::string_view state, std::string_view reason)
{
    constexpr std::string_view c_Waiting[] = {"PENDING",      "CONFIGURING", "REQUEUED", "REQUEUE_FED",
                                              "REQUEUE_HOLD", "SUSPENDED",   "STOPPED",  "RESV_DEL_HOLD"};
    constexpr std::string_view c_Running[] = {"RUNNING", "COMPLETING", "RESIZING", "SIGNALING", "STAGE_OUT"};
    // Slurm holds a task that could not be started, until an administrator releases it.
    constexpr std::string_view c_Held[] = {"launch failed requeued held", "launch_failed_requeued_held"};
    if (isAny(reason, c_Held))
    {
        return ETaskState::Over;
    }
    return isAny(state, c_Waiting)   ? ETaskState::Waiting
           : isAny(state, c_Running) ? ETaskState::Running
                                     : ETaskState::Over;
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

std::wstring GetJobName(const std::string& runId, std::uint32_t submission)
{
    return LbFormat(L"lutestsuite-%s-%u", LbEncoding::FromUtf8(runId), submission);
}

std::wstring FormatArray(const std::vector<std::uint32_t>& shards)
{
    std::wstring text;
    for (std::size_t first = 0; first < shards.size();)
    {
        std::size_t last = first;
        while (last + 1 < shards.size() && shards[last + 1] == shards[last] + 1)
        {
            ++last;
        }
        text += (text.empty() ? L"" : L",") + std::to_wstring(shards[first]);
        text += last > first ? L"-" + std::to_wstring(shards[last]) : L"";
        first = last + 1;
    }
    return text;
}

Tasks ReadQueue(std::string_view output)
{
    constexpr std::size_t c_Fields = 5;
    Tasks tasks;
    for (const std::string_view line : split(output, '\n'))
    {
        const std::vector<std::string_view> fields = split(line, '|');
        std::uint32_t shard = 0;
        if (fields.size() != c_Fields || fields[0] != "task" ||
            std::from_chars(fields[1].data(), fields[1].data() + fields[1].size(), shard).ec != std::errc())
        {
            continue;
        }
        const ETaskState state = getState(fields[2], fields[3]);
        const auto known = tasks.find(shard);
        if (known == tasks.end() || known->second.state == ETaskState::Over)
        {
            tasks[shard] = {state, describe(state, fields[2], fields[3], fields[4])};
        }
    }
    return tasks;
}

} // namespace Runner

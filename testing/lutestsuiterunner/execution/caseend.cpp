#include "testing/lutestsuiterunner/execution/caseend.h"

#include <string>
#include <vector>

namespace Runner
{

namespace
{

std::wstring join(const std::wstring& prefix, const std::vector<std::wstring>& lines)
{
    std::wstring text;
    for (const std::wstring& line : lines)
    {
        text += prefix + line + L"\n";
    }
    return text;
}

/// The run has appended the lines to all other messages.
void removeLastLines(const std::vector<std::wstring>& lines, std::wstring& messages)
{
    if (const std::wstring tail = join(L"\t\tINFO:  ", lines); messages.ends_with(tail))
    {
        messages.resize(messages.size() - tail.size());
    }
}

} // namespace

SCaseEnded MakeCaseEnd(const LuTestSuiteRun::SCaseFinished& finished)
{
    const std::vector<std::wstring> stacks = LuTestSuiteRun::DescribeStacks(finished.end.stacks);
    SCaseEnded record;
    record.end = static_cast<EAttemptEnd>(finished.end.kind);
    record.info = finished.info;
    removeLastLines(stacks, record.info.messages);
    if (!finished.end.dumpFile.empty())
    {
        removeLastLines({L"Speicherabbild: " + finished.end.dumpFile}, record.info.messages);
    }
    record.processId = finished.end.processId;
    record.exitStatus = finished.end.exitStatus;
    record.reason = finished.end.reason;
    // If there is a reason, the messages contain the last lines.
    record.output = record.reason.empty() ? join(L"", finished.end.lastLines) : L"";
    record.stacks = join(L"", stacks);
    record.core = finished.end.dumpFile;
    return record;
}

} // namespace Runner

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

/// Removes these information lines, which the run has appended, from the end of the messages. False if they are not
/// there.
bool removeLastLines(const std::vector<std::wstring>& lines, std::wstring& messages)
{
    const std::wstring tail = join(L"\t\tINFO:  ", lines);
    const bool isLast = messages.ends_with(tail);
    messages.resize(messages.size() - (isLast ? tail.size() : 0));
    return isLast;
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
    // If there is a reason, the child's last lines of output stay in the messages, below the reason.
    const std::vector<std::wstring>& lines = finished.end.lastLines;
    const bool isMoved = record.reason.empty() && removeLastLines(lines, record.info.messages);
    record.output = isMoved ? join(L"", lines) : L"";
    record.stacks = join(L"", stacks);
    record.core = finished.end.dumpFile;
    return record;
}

} // namespace Runner

#include "testing/lutestsuiterunner/console/casetext.h"

#include "base/lbformat.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace Runner
{

namespace
{

std::wstring indent(const std::wstring& text, std::size_t mostLines)
{
    std::wstring lines;
    std::size_t count = 0;
    std::size_t start = 0;
    for (; start < text.size() && count < mostLines; ++count)
    {
        const std::size_t end = std::min(text.find(L'\n', start), text.size());
        // Removes the tabs by which the library indents its messages.
        const std::size_t first = std::min(text.find_first_not_of(L'\t', start), end);
        lines += L"    " + text.substr(first, end - first) + L"\n";
        start = end + 1;
    }
    return start < text.size() ? lines + L"    ... (alles Weitere steht im Report)\n" : lines;
}

/// The first frame in the module. Searches the first stack, which is that of the thread at fault.
std::wstring findOwnFrame(const std::wstring& stacks, const std::wstring& module)
{
    const std::wstring first = stacks.substr(0, stacks.find(L"\nStapel "));
    const std::size_t frame = first.find(L" " + module + L"+0x");
    return frame == std::wstring::npos ? L"" : first.substr(frame + 1, first.find(L'\n', frame) - frame - 1);
}

/// The line about a case that passed after a failed attempt.
std::wstring describePassed(const std::wstring& name, const SAttempt& attempt)
{
    return attempt.kind == EAttemptKind::Confirm
               ? LbFormat(L"NUR IM GEMEINSAMEN PROZESS %s (im eigenen Prozess bestanden)\n", name)
               : LbFormat(L"UNZUVERLÄSSIG %s (im Versuch %u bestanden)\n", name, attempt.result.attempt);
}

} // namespace

std::wstring FormatTime(std::uint64_t nanoseconds)
{
    constexpr double c_NanosecondsPerSecond = 1e9;
    return LuTestSuiteUtils::FormatTime(static_cast<double>(nanoseconds) / c_NanosecondsPerSecond, 1);
}

std::wstring DescribeFailure(const SPlan& plan, std::uint32_t caseIndex, const SAttempt& attempt, std::size_t mostLines)
{
    const SPlannedCase& planned = plan.cases[caseIndex];
    const LuTestSuite::STestCase& testCase = plan.unitTests[planned.unitTest].cases[planned.testCase];
    std::wstring text;
    if (!testCase.dataSetFile.empty())
    {
        text += LbFormat(L"    Datei: %s\n", std::wstring(testCase.dataSetFile));
    }
    const std::wstring& messages = attempt.result.info.messages;
    if (messages.find(attempt.result.reason) == std::wstring::npos)
    {
        text += LbFormat(L"    Grund: %s\n", attempt.result.reason);
    }
    text += indent(messages, mostLines) + indent(attempt.result.output, mostLines);
    if (!attempt.result.core.empty())
    {
        text += LbFormat(L"    Speicherabbild: %s\n", attempt.result.core);
    }
    const std::wstring frame = findOwnFrame(attempt.result.stacks, plan.unitTests[planned.unitTest].moduleName);
    return frame.empty() ? text : text + LbFormat(L"    Stelle: %s\n", frame);
}

std::wstring DescribeAttempt(const SPlan& plan, std::uint32_t caseIndex, const SAttempt& attempt)
{
    if (!attempt.IsFinished() || (attempt.HasPassed() && attempt.kind == EAttemptKind::First))
    {
        return L"";
    }
    constexpr std::size_t c_MostLines = 40;
    const std::wstring name = GetCaseName(plan, caseIndex);
    if (attempt.HasPassed())
    {
        return describePassed(name, attempt);
    }
    const wchar_t* const quarantine = plan.cases[caseIndex].isQuarantined ? L" (in Quarantäne)" : L"";
    const std::uint32_t number = attempt.result.attempt;
    return LbFormat(L"FEHLGESCHLAGEN%s %s (%s, %s%s)\n", quarantine, name,
                    LuTestSuiteReport::toDescriptionString(attempt.result.info.result),
                    FormatTime(attempt.result.info.time),
                    number == 1 ? std::wstring() : LbFormat(L", Versuch %u", number)) +
           DescribeFailure(plan, caseIndex, attempt, c_MostLines);
}

} // namespace Runner

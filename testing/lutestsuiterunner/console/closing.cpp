#include "testing/lutestsuiterunner/console/closing.h"

#include <algorithm>
#include <functional>
#include <span>

#include "base/lbcommandline.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/console/casetext.h"
#include "testing/lutestsuiterunner/reports/processlists.h"

namespace Runner
{

namespace
{

using Cases = std::vector<std::uint32_t>;

bool hasFailed(const CRunState& state, std::uint32_t index)
{
    const EVerdict verdict = state.GetVerdict(index);
    return verdict == EVerdict::Failed || verdict == EVerdict::FailedShared;
}

std::wstring list(const std::wstring& title, const CRunState& state, const Cases& cases,
                  const std::function<std::wstring(std::uint32_t)>& getNote)
{
    std::wstring text = cases.empty() ? L"" : title + L"\n";
    for (const std::uint32_t index : cases)
    {
        text += L"    " + GetCaseName(state.GetPlan(), index) + getNote(index) + L"\n";
    }
    return text;
}

/// For a case that fails only in a shared process, names the cases that ran before it in that process.
std::wstring describeShared(const CRunState& state, std::uint32_t index, const std::wstring& folder)
{
    if (state.GetVerdict(index) != EVerdict::FailedShared)
    {
        return L"";
    }
    const SAttempt& reported = *state.GetReported(index);
    const std::span<const std::uint32_t> earlier = state.GetPredecessors(reported);
    std::wstring text = L" (nur im gemeinsamen Prozess";
    const std::size_t first = earlier.size() > c_MostEarlierCases ? earlier.size() - c_MostEarlierCases : 0;
    for (std::size_t place = first; place < earlier.size(); ++place)
    {
        text += (place == first ? L"; davor liefen dort: " : L", ") + GetCaseName(state.GetPlan(), earlier[place]);
    }
    return text + (first > 0 ? LbFormat(L" und %u Testfälle davor; alle: die ersten %u Zeilen von %s)", first,
                                        earlier.size(), folder + LbPath::ToNative(GetProcessListName(reported.process)))
                             : std::wstring(L")"));
}

std::wstring listSlowest(const CRunState& state)
{
    constexpr std::size_t c_Slowest = 5;
    const auto getTime = [&state](std::uint32_t index) { return state.GetReported(index)->result.info.time; };
    Cases cases = state.FindCases([&](std::uint32_t index) { return state.GetVerdict(index) != EVerdict::Missing; });
    std::ranges::stable_sort(cases, std::greater(), getTime);
    cases.resize(std::min(cases.size(), c_Slowest));
    return list(L"Langsamste Testfälle:", state, cases,
                [&](std::uint32_t index) { return L"  " + FormatTime(getTime(index)); });
}

/// A command line with the full path of this program, so that it works in any working directory.
std::wstring getCommand(const wchar_t* command)
{
    return QuoteForShell(LbOs::GetExecutablePath()) + L" " + command;
}

/// A folder that does not exist yet, so that the command replaces nothing when it is called for the first time.
std::wstring findFolderOfRepetition(const std::wstring& folder)
{
    const std::wstring first = LbPath::WithoutSeparator(folder) + L"-wiederholt";
    std::wstring path = first;
    for (std::uint32_t number = 2; LbFileSystem::Exists(path); ++number)
    {
        path = LbFormat(L"%s-%u", first, number);
    }
    return path;
}

/// The last option --quarantine of the call as words for the shell, each after a blank; empty if the call has no such
/// option, or its file does not exist. A relative path refers to `workingDirectory`.
std::wstring findQuarantine(std::span<const std::wstring> own, const std::wstring& workingDirectory)
{
    const std::wstring name = L"--quarantine";
    std::wstring words;
    std::wstring file;
    for (std::size_t index = 0; index < own.size(); ++index)
    {
        if (own[index].starts_with(name + L"="))
        {
            words = L" " + QuoteForShell(own[index]);
            file = own[index].substr(name.size() + 1);
        }
        else if (own[index] == name && index + 1 < own.size())
        {
            words = L" " + name + L" " + QuoteForShell(own[index + 1]);
            file = own[index + 1];
        }
    }
    const std::wstring path =
        LbOs::IsAbsolutePath(file) ? file : LbPath::WithSeparator(workingDirectory) + LbPath::ToNative(file);
    return LbFileSystem::IsFile(path) ? words : std::wstring();
}

std::wstring describeRepetition(const std::wstring& folder, const SPlan& plan)
{
    const std::vector<std::wstring>& arguments = plan.arguments;
    if (arguments.empty())
    {
        return L"";
    }
    const auto library = std::ranges::find(arguments, L"--");
    std::wstring line = getCommand(L"run --previous ") + QuoteForShell(LbPath::WithoutSeparator(folder)) +
                        L" --only-failed --out " + QuoteForShell(findFolderOfRepetition(folder)) + L" --force" +
                        findQuarantine({arguments.begin(), library}, plan.workingDirectory);
    for (auto option = library; option != arguments.end(); ++option)
    {
        line += L" " + QuoteForShell(*option);
    }
    const bool isIsolated = std::find(library, arguments.end(), L"-s") != arguments.end() ||
                            std::find(library, arguments.end(), L"--isolated") != arguments.end();
    return L"Wiederholt jeden fehlgeschlagenen Testfall allein:\n    " + line + (isIsolated ? L"\n" : L" -s\n");
}

} // namespace

std::wstring DescribeResuming(const std::wstring& folder)
{
    return L"Fortsetzen:\n    " + getCommand(L"resume ") + QuoteForShell(LbPath::WithoutSeparator(folder)) + L"\n";
}

std::wstring QuoteForShell(const std::wstring& argument)
{
    constexpr const wchar_t* c_Plain = L"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=:,./";
    const bool isWindows = LbPath::c_Separator == L'\\';
    const std::wstring plain = std::wstring(c_Plain) + (isWindows ? L"\\" : L"");
    if (!argument.empty() && argument.find_first_not_of(plain) == std::wstring::npos)
    {
        return argument;
    }
    if (isWindows)
    {
        return LbCommandLine::Quote(argument);
    }
    std::wstring quoted = L"'";
    for (const wchar_t character : argument)
    {
        quoted += character == L'\'' ? std::wstring(L"'\\''") : std::wstring(1, character);
    }
    return quoted + L"'";
}

std::wstring DescribeClosing(const CRunState& state, const std::wstring& folder)
{
    const auto isQuarantined = [&state](std::uint32_t index) { return state.GetPlan().cases[index].isQuarantined; };
    const Cases failed =
        state.FindCases([&](std::uint32_t index) { return hasFailed(state, index) && !isQuarantined(index); });
    const Cases quarantined =
        state.FindCases([&](std::uint32_t index) { return hasFailed(state, index) && isQuarantined(index); });
    const Cases flaky =
        state.FindCases([&](std::uint32_t index) { return state.GetVerdict(index) == EVerdict::Flaky; });
    const auto nothing = [](std::uint32_t /*index*/) { return std::wstring(); };
    std::wstring text = list(L"Fehlgeschlagen:", state, failed,
                             [&](std::uint32_t index) { return describeShared(state, index, folder); }) +
                        list(L"Fehlgeschlagen, in Quarantäne:", state, quarantined, nothing) +
                        list(L"Unzuverlässig (erst bei einer Wiederholung bestanden):", state, flaky, nothing) +
                        listSlowest(state);
    return failed.empty() ? text : text + describeRepetition(folder, state.GetPlan());
}

} // namespace Runner

#include "testing/lutestsuiterunner/execution/hostcrash.h"

#include <algorithm>
#include <span>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/os/crash.h"
#include "testing/lutestsuiterunner/journal/crashnotes.h"
#include "testing/lutestsuiterunner/journal/filenames.h"

namespace Runner
{

namespace
{

constexpr std::wstring_view c_CrashStart = L"Fehler: Absturz in ";
constexpr std::wstring_view c_EndStart = L"Fehler: Der Prozess wurde mitten im Aufruf beendet: ";
constexpr std::wstring_view c_ErrorStart = L"Fehler: ";

const LuTestSuite::STestCase& getCase(const SPlan& plan, std::uint32_t index)
{
    return plan.unitTests[plan.cases[index].unitTest].cases[plan.cases[index].testCase];
}

/// The name of the case as a crash note spells it.
std::wstring getCrashName(const SPlan& plan, std::uint32_t index)
{
    std::wstring name =
        LbFormat(L"'%s:%s'", plan.unitTests[plan.cases[index].unitTest].className, getCase(plan, index).name);
    std::ranges::replace_if(
        name, [](wchar_t character) { return character < L' '; }, L' ');
    return name;
}

std::wstring getFirstLine(std::wstring_view text)
{
    return std::wstring(text.substr(0, text.find_first_of(L"\r\n")));
}

/// An error line without the prefix of errors, and without the name at its end.
std::wstring withoutName(const std::wstring& line, const std::wstring& name)
{
    constexpr std::wstring_view c_Between = L": ";
    const std::size_t length = line.size() - c_ErrorStart.size() - c_Between.size() - name.size();
    return line.substr(c_ErrorStart.size(), length);
}

/// The cases that ran in a host's own process when it ended.
using Suspects = std::vector<std::uint32_t>;

/// True if another case that has the same name in crash notes ran in the same host: a case of the same name in another
/// folder, or another repetition.
bool hasNamesake(const CRunState& state, const Suspects& suspects, std::uint32_t index)
{
    const std::wstring name = getCrashName(state.GetPlan(), index);
    const std::uint32_t journal = state.GetAttempts(index).back().started.journal;
    return std::ranges::any_of(suspects, [&](std::uint32_t other) {
        return other != index && state.GetAttempts(other).back().started.journal == journal &&
               getCrashName(state.GetPlan(), other) == name;
    });
}

/// Why the host ended; empty if the note does not blame the case, or may mean another case.
std::wstring findReason(const std::wstring& note, const CRunState& state, const Suspects& suspects, std::uint32_t index)
{
    const bool isOnlyOne = suspects.size() == 1;
    const std::wstring name = getCrashName(state.GetPlan(), index);
    const std::wstring named = std::wstring(c_CrashStart) + name + L": ";
    const bool isNamed = note.starts_with(named) || getFirstLine(note) == std::wstring(c_EndStart) + name;
    if (isNamed && !hasNamesake(state, suspects, index))
    {
        return note.starts_with(named)
                   ? L"Absturz des Prozesses, der den Lauf ausführte: " + getFirstLine(note.substr(named.size()))
                   : L"Ende des Prozesses, der den Lauf ausführte: " + withoutName(getFirstLine(note), name);
    }
    const bool isOfAnother = note.starts_with(c_CrashStart) || note.starts_with(c_EndStart);
    if (!isOnlyOne || isOfAnother || !note.starts_with(c_ErrorStart))
    {
        return L"";
    }
    return L"Ende des Prozesses, der den Lauf ausführte: " + getFirstLine(note.substr(c_ErrorStart.size()));
}

bool isInProcess(const CRunState& state, std::uint32_t index)
{
    return state.GetAttempts(index).back().kind != EAttemptKind::Confirm && !GetParams(state.GetPlan(), index).external;
}

SCaseEnded makeEnd(const SAttempt& attempt, const std::wstring& reason)
{
    SCaseEnded record;
    record.caseIndex = attempt.result.caseIndex;
    record.attempt = attempt.result.attempt;
    record.end = EAttemptEnd::HostEnded;
    record.processId = attempt.result.processId;
    record.info.threadIndex = attempt.result.info.threadIndex;
    record.reason = reason;
    return record;
}

} // namespace

CCrashNote::CCrashNote(const std::wstring& folder, std::uint32_t journal)
    : m_path(GetCrashNotePath(folder, journal)), m_file(LbOs::c_InvalidFile)
{
    if (LbFileSystem::AssertDirectory(folder + c_OutputFolderName))
    {
        m_file = LbOs::OpenForWriting(m_path);
    }
    if (m_file == LbOs::c_InvalidFile)
    {
        throw LbException(LbFormat(L"Die Datei %s konnte nicht angelegt werden", m_path));
    }
    LbOs::CopyCrashTexts(m_file);
}

CCrashNote::~CCrashNote()
{
    LbOs::CopyCrashTexts(LbOs::c_InvalidFile);
    const bool isEmpty = LbOs::GetFileSize(m_file) == 0;
    LbOs::CloseFile(m_file);
    if (isEmpty)
    {
        LbOs::RemoveFile(m_path);
    }
}

namespace
{

/// True if the last host that ran the case recorded that it was canceled.
bool wasHostCanceled(const CRunState& state, std::uint32_t index)
{
    return state.WasHostCanceled(state.GetAttempts(index).back().started.journal);
}

/// Number of hosts that were lost, not canceled, while they ran the case, including the last host.
std::uint32_t countLostHosts(const CRunState& state, std::uint32_t index)
{
    const SAttempt& attempt = state.GetAttempts(index).back();
    return attempt.lostHosts - attempt.canceledHosts + 1;
}

/// True if the last host that ran the case was running no other case.
bool wasAlone(const CRunState& state, const std::vector<std::uint32_t>& open, std::uint32_t index)
{
    const std::uint32_t journal = state.GetAttempts(index).back().started.journal;
    return std::ranges::count_if(open, [&](std::uint32_t other) {
               return state.GetAttempts(other).back().started.journal == journal;
           }) == 1;
}

/// Moves each case during which at least two hosts of the shard were lost from `open` to `underWay`.
void findRepeated(const CRunState& state, std::vector<std::uint32_t>& open, SUnderWay& underWay)
{
    constexpr std::uint32_t c_Repeated = 2;
    constexpr std::uint32_t c_TooOften = 3;
    const std::vector<std::uint32_t> all = open;
    std::erase_if(open, [&](std::uint32_t index) {
        if (wasHostCanceled(state, index))
        {
            return false;
        }
        const std::uint32_t hosts = countLostHosts(state, index);
        if (hosts >= c_TooOften && wasAlone(state, all, index))
        {
            underWay.crashed.push_back(makeEnd(state.GetAttempts(index).back(),
                                               LbFormat(L"%u Prozesse, die den Lauf ausführten, gingen ohne Meldung "
                                                        L"bei diesem Testfall verloren, der letzte führte nur ihn aus",
                                                        hosts)));
        }
        else if (hosts >= c_Repeated)
        {
            underWay.repeated.push_back(index);
        }
        return hosts >= c_Repeated;
    });
}

/// Moves the suspects that have crashed their host to the crashed cases.
void findCrashed(const CRunState& state, const std::wstring& folder, SUnderWay& underWay)
{
    const Suspects suspects = underWay.suspects;
    std::erase_if(underWay.suspects, [&](std::uint32_t index) {
        const SAttempt& attempt = state.GetAttempts(index).back();
        const std::wstring note = ReadCrashNote(folder, attempt.started.journal);
        const std::wstring reason = findReason(note, state, suspects, index);
        if (!reason.empty())
        {
            underWay.crashed.push_back(makeEnd(attempt, reason));
        }
        return !reason.empty();
    });
}

} // namespace

SUnderWay FindUnderWay(const CRunState& state, const std::wstring& folder)
{
    SUnderWay underWay;
    std::vector<std::uint32_t> open = state.GetOpenCases();
    if (state.GetPlan().part)
    {
        findRepeated(state, open, underWay);
    }
    for (const std::uint32_t index : open)
    {
        (isInProcess(state, index) ? underWay.suspects : underWay.others).push_back(index);
    }
    findCrashed(state, folder, underWay);
    return underWay;
}

std::vector<std::uint32_t> FindCanceled(const CRunState& state)
{
    if (!state.GetPlan().part)
    {
        return {};
    }
    std::vector<std::uint32_t> cases = state.FindCases([&state](std::uint32_t index) {
        const std::span<const SAttempt> attempts = state.GetAttempts(index);
        return !attempts.empty() && !attempts.back().IsFinished() &&
               (attempts.back().IsEnded() || wasHostCanceled(state, index));
    });
    std::ranges::sort(cases, {}, [&state](std::uint32_t index) { return state.GetAttempts(index).back().started; });
    return cases;
}

} // namespace Runner

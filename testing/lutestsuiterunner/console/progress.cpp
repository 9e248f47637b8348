#include "testing/lutestsuiterunner/console/progress.h"

#include <algorithm>
#include <chrono>
#include <string_view>

#include "base/lbformat.h"
#include "base/os/console.h"
#include "testing/lutestsuiterunner/console/casetext.h"
#include "testing/lutestsuiterunner/console/terminal.h"

namespace Runner
{

namespace
{

constexpr std::uint64_t c_NanosecondsPerSecond = 1'000'000'000;
constexpr std::size_t c_RunningShown = 3;
constexpr std::wstring_view c_Comma = L", ";

/// The end of the name, which tells the case, after an ellipsis; empty if there is no space for that.
std::wstring shorten(const std::wstring& name, std::size_t space)
{
    constexpr std::wstring_view c_Ellipsis = L"...";
    constexpr std::size_t c_Shortest = 8;
    if (name.size() <= space)
    {
        return name;
    }
    return space < c_Shortest ? std::wstring()
                              : std::wstring(c_Ellipsis) + name.substr(name.size() - space + c_Ellipsis.size());
}

} // namespace

std::wstring FormatDuration(std::uint64_t seconds)
{
    constexpr std::uint64_t c_Minute = 60;
    constexpr std::uint64_t c_Hour = 3600;
    return seconds < c_Hour
               ? LbFormat(L"%d:%02d", seconds / c_Minute, seconds % c_Minute)
               : LbFormat(L"%d:%02d:%02d", seconds / c_Hour, seconds % c_Hour / c_Minute, seconds % c_Minute);
}

std::wstring FormatProgress(const SProgress& progress, std::size_t width)
{
    std::wstring text = LbFormat(L"%d/%d, fehlgeschlagen: %d, Zeit: %s", progress.done, progress.total, progress.failed,
                                 FormatDuration(progress.elapsed));
    if (progress.left != 0)
    {
        text += LbFormat(L", noch etwa %s", FormatDuration(progress.left));
    }
    for (const auto& [name, seconds] : progress.running)
    {
        const std::wstring time = LbFormat(L" (%s)", FormatDuration(seconds));
        const std::size_t used = text.size() + c_Comma.size() + time.size();
        const std::wstring shown = width == 0 ? name : shorten(name, width - std::min(width, used));
        if (shown.empty())
        {
            break;
        }
        text.append(c_Comma).append(shown).append(time);
    }
    return text;
}

CProgressLine::CProgressLine(const CRunState& state, std::span<const std::uint32_t> cases,
                             std::vector<std::uint64_t> times)
    : m_plan(state.GetPlan()), m_times(std::move(times)), m_timer(LbTimer::eR_NanoSecond)
{
    for (std::uint32_t index = 0; index < m_plan.cases.size(); ++index)
    {
        const EVerdict verdict = state.GetVerdict(index);
        m_progress.done += verdict == EVerdict::Missing ? 0 : 1;
        if ((verdict == EVerdict::Failed || verdict == EVerdict::FailedShared) && !m_plan.cases[index].isQuarantined)
        {
            m_failed.insert(index);
        }
    }
    m_progress.total = m_progress.done + cases.size();
    for (const std::uint32_t index : cases)
    {
        m_totalWeight += static_cast<double>(getWeight(index));
    }
    m_thread = std::thread([this] { run(); });
}

CProgressLine::~CProgressLine()
{
    {
        const std::lock_guard lock(m_mutex);
        m_hasEnded = true;
    }
    m_ended.notify_all();
    m_thread.join();
    CTerminal::Get().ShowStatus(L"");
}

void CProgressLine::OnStarted(std::uint32_t caseIndex)
{
    const std::lock_guard lock(m_mutex);
    m_running[caseIndex] = m_timer.GetElapsed();
}

void CProgressLine::count(std::uint32_t caseIndex, const SAttempt& attempt)
{
    const std::lock_guard lock(m_mutex);
    m_running.erase(caseIndex);
    if (attempt.IsFinished() && attempt.kind == EAttemptKind::First)
    {
        ++m_progress.done;
        m_doneWeight += static_cast<double>(getWeight(caseIndex));
    }
    if (attempt.HasPassed() && attempt.kind != EAttemptKind::Confirm)
    {
        m_failed.erase(caseIndex);
    }
    else if (attempt.IsFinished() && !m_plan.cases[caseIndex].isQuarantined)
    {
        m_failed.insert(caseIndex);
    }
}

void CProgressLine::OnEnded(std::uint32_t caseIndex, const SAttempt& attempt, bool /*isFinal*/)
{
    count(caseIndex, attempt);
    if (const std::wstring text = DescribeAttempt(m_plan, caseIndex, attempt); !text.empty())
    {
        CTerminal::Get().WriteOutput(text);
    }
}

void CProgressLine::run()
{
    using namespace std::chrono_literals;
    const auto interval = CTerminal::Get().HasStatus() ? std::chrono::milliseconds(250) : 30s;
    std::unique_lock lock(m_mutex);
    while (!m_ended.wait_for(lock, interval, [this] { return m_hasEnded; }))
    {
        lock.unlock();
        if (CTerminal::Get().HasStatus())
        {
            // The terminal shows one character less than its width.
            const std::size_t width = std::max<std::size_t>(LbOs::GetErrorTerminalWidth(), 2) - 1;
            CTerminal::Get().ShowStatus(FormatProgress(GetProgress(), width));
        }
        else
        {
            CTerminal::Get().WriteError(FormatProgress(GetProgress()) + L"\n");
        }
        lock.lock();
    }
}

std::uint64_t CProgressLine::getWeight(std::uint32_t caseIndex) const
{
    return m_times.empty() ? 1 : std::max<std::uint64_t>(1, m_times[caseIndex]);
}

SProgress CProgressLine::GetProgress() const
{
    const std::lock_guard lock(m_mutex);
    SProgress progress = m_progress;
    progress.failed = m_failed.size();
    const std::uint64_t now = m_timer.GetElapsed();
    progress.elapsed = now / c_NanosecondsPerSecond;
    if (m_doneWeight > 0)
    {
        const double left = std::max(0.0, m_totalWeight - m_doneWeight) / m_doneWeight;
        progress.left = static_cast<std::uint64_t>(left * static_cast<double>(now) / c_NanosecondsPerSecond);
    }
    addRunning(now, progress);
    return progress;
}

void CProgressLine::addRunning(std::uint64_t now, SProgress& progress) const
{
    std::vector<std::pair<std::uint64_t, std::uint32_t>> running;
    for (const auto& [caseIndex, start] : m_running)
    {
        running.emplace_back(start, caseIndex);
    }
    std::ranges::sort(running);
    for (std::size_t place = 0; place < running.size() && place < c_RunningShown; ++place)
    {
        const auto& [start, caseIndex] = running[place];
        progress.running.emplace_back(GetCaseName(m_plan, caseIndex), (now - start) / c_NanosecondsPerSecond);
    }
}

} // namespace Runner

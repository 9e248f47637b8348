#include "testing/lutestsuite/run/children/leavingchildren.h"

#include <algorithm>
#include <utility>

#include "base/lbencoding.h"
#include "base/lbformat.h"
#include "base/os/console.h"
#include "base/os/crash.h"
#include "base/os/processes.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/run/children/childend.h"

namespace LuTestSuiteRun
{

std::size_t CLeavingChildren::GetMost()
{
    constexpr std::size_t c_Least = 4;
    return LbOs::HasFewProcesses() ? 0 : std::max<std::size_t>(c_Least, 2 * LuTestSuiteUtils::GetDefaultThreadCount());
}

CLeavingChildren::CLeavingChildren()
{
    m_children.reserve(GetMost() + 1);
}

CLeavingChildren::~CLeavingChildren()
{
    while (!m_children.empty())
    {
        waitForFirst(true);
    }
    if (!m_report.empty())
    {
        LbOs::WriteStandardError(LbEncoding::ToUtf8(m_report));
    }
}

void CLeavingChildren::Add(SLeavingChild leaving) noexcept
{
    if (!leaving.child)
    {
        return;
    }
    const std::lock_guard lock(m_mutex);
    dropEnded();
    m_children.push_back(std::move(leaving));
    while (m_children.size() > GetMost())
    {
        waitForFirst(!m_hadToEnd);
    }
}

bool CLeavingChildren::EndAll() noexcept
{
    const std::lock_guard lock(m_mutex);
    const bool wereThere = !m_children.empty();
    for (const SLeavingChild& leaving : m_children)
    {
        leaving.child->Terminate();
    }
    m_children.clear();
    return wereThere;
}

void CLeavingChildren::dropEnded()
{
    for (std::size_t index = m_children.size(); index > 0; --index)
    {
        const SLeavingChild& leaving = m_children[index - 1];
        if (!leaving.child->IsRunning() || leaving.time.GetElapsed() >= sc_uiLongestMilliseconds)
        {
            drop(index - 1);
        }
    }
}

void CLeavingChildren::waitForFirst(bool isPatient)
{
    const SLeavingChild& first = m_children.front();
    const std::uint64_t elapsed = std::min<std::uint64_t>(first.time.GetElapsed(), sc_uiLongestMilliseconds);
    if (isPatient)
    {
        first.child->Wait(static_cast<std::uint32_t>(sc_uiLongestMilliseconds - elapsed));
    }
    drop(0);
}

void CLeavingChildren::drop(std::size_t index)
{
    const SLeavingChild leaving = std::move(m_children[index]);
    m_children.erase(m_children.begin() + static_cast<std::ptrdiff_t>(index));
    m_hadToEnd = leaving.child->IsRunning();
    const std::optional<std::int64_t> status = leaving.child->GetExitStatus();
    if (status != 0)
    {
        // Also kills the child's descendants, because the child has not ended them itself.
        leaving.child->Terminate();
    }
    if (status.value_or(0) == 0 || m_reports >= sc_uiMostReports)
    {
        return;
    }
    ++m_reports;
    m_report += LbFormat(L"Warnung: Ein Prozess für Testfälle endete nach seiner Arbeit mit %s\n",
                         LbOs::DescribeExitStatus(*status));
    for (const std::wstring& line : ReadLastLines(leaving.errors.get(), 0))
    {
        m_report += L"\t" + line + L"\n";
    }
}

} // namespace LuTestSuiteRun

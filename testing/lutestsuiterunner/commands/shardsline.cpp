#include "testing/lutestsuiterunner/commands/shardsline.h"

#include <cstdint>

#include "base/lbformat.h"
#include "testing/lutestsuiterunner/commands/shardstext.h"
#include "testing/lutestsuiterunner/console/progress.h"
#include "testing/lutestsuiterunner/console/terminal.h"

namespace Runner
{

CShardsLine::~CShardsLine()
{
    CTerminal::Get().ShowStatus(L"");
}

void CShardsLine::Show(const CFollower& follower, Clock::time_point now)
{
    constexpr std::chrono::seconds c_Interval(30);
    const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(now - m_start).count();
    const std::wstring text =
        LbFormat(L"%s, Zeit: %s", FormatShards(follower), FormatDuration(static_cast<std::uint64_t>(elapsed)));
    if (CTerminal::Get().HasStatus())
    {
        CTerminal::Get().ShowStatus(text);
    }
    else if (now >= m_next)
    {
        m_next = now + c_Interval;
        CTerminal::Get().WriteError(text + L"\n");
    }
}

} // namespace Runner

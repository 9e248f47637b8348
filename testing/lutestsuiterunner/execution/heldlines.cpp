#include "testing/lutestsuiterunner/execution/heldlines.h"

#include <utility>

#include "testing/lutestsuite/lutestsuiteout.h"

namespace Runner
{

namespace
{

thread_local std::wstring* s_held = nullptr;

} // namespace

CHeldLines::CHeldLines()
{
    s_held = &m_lines;
}

CHeldLines::~CHeldLines()
{
    s_held = nullptr;
    if (!m_lines.empty())
    {
        LuTestSuiteOut::Write(L"%s", m_lines);
    }
}

std::wstring CHeldLines::Take()
{
    return std::exchange(m_lines, {});
}

bool CHeldLines::Hold(const std::wstring& line)
{
    if (s_held == nullptr)
    {
        return false;
    }
    *s_held += line;
    return true;
}

} // namespace Runner

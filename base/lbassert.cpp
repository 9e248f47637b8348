#include "base/lbassert.h"

#include <atomic>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/lbdiagnostics.h"
#include "base/lbformat.h"
#include "base/lbsourcelocation.h"
#include "base/os/process.h"

namespace
{

std::atomic<bool> s_isDialogEnabled = true;

} // namespace

void LbAssert::SetDialogEnabled(bool enabled) noexcept
{
    s_isDialogEnabled = enabled;
}

bool LbAssert::IsDialogEnabled() noexcept
{
    return s_isDialogEnabled;
}

void LbAssert::Fail(const char* condition, const char* file, int line)
{
    const std::string_view fileName = LbSourceLocation(file, "", 0).GetFileName();
    const std::wstring text = LbFormat(L"Zusicherung verletzt: %S (%S, Zeile %d)", condition, fileName, line);
    LbDiagnostics::Trace(text);
    if (!IsDialogEnabled())
    {
        return;
    }
    switch (LbOs::ShowAssertDialog(text))
    {
    case LbOs::EAssertAnswer::Ignore:
        break;
    case LbOs::EAssertAnswer::Break:
        LbOs::BreakIntoDebugger();
        break;
    case LbOs::EAssertAnswer::Abort:
        std::abort();
    }
}

#include "testing/lutestsuiterunner/console/messages.h"

#include <atomic>

#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/execution/heldlines.h"

namespace Runner
{

namespace
{

std::atomic<bool> s_onlyWarnings = false;

bool isWarning(const std::wstring& text)
{
    return text.starts_with(L"Warnung: ") || text.starts_with(L"Fehler: ");
}

class CErrorOut : public LuTestSuiteOut::LuCustomOut
{
public:
    void Output(const LuTestSuiteOut& line) override
    {
        if (CHeldLines::Hold(line.GetText()))
        {
            return;
        }
        if (!s_onlyWarnings || isWarning(line.GetText()))
        {
            CTerminal::Get().WriteError(line.GetText());
        }
    }
};

} // namespace

void MoveLibraryLinesToErrors()
{
    static CErrorOut s_ErrorOut;
    LuTestSuiteOut::AddCustomOut(&s_ErrorOut);
    LuTestSuiteOut::SetConsoleOut(false);
}

void ShowOnlyWarnings()
{
    s_onlyWarnings = true;
}

} // namespace Runner

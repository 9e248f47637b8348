#include "testing/lutestsuiterunner/console/messages.h"

#include "base/lbencoding.h"
#include "base/os/console.h"
#include "testing/lutestsuite/lutestsuiteout.h"

namespace Runner
{

namespace
{

class CErrorOut : public LuTestSuiteOut::LuCustomOut
{
public:
    void Output(const LuTestSuiteOut& line) override { LbOs::WriteStandardError(LbEncoding::ToUtf8(line.GetText())); }
};

} // namespace

void MoveLibraryLinesToErrors()
{
    static CErrorOut s_ErrorOut;
    LuTestSuiteOut::AddCustomOut(&s_ErrorOut);
    LuTestSuiteOut::SetConsoleOut(false);
}

} // namespace Runner

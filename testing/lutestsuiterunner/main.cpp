/// The host for build servers.
///
/// Exit status: 0 if the command succeeded and the run is green, 1 if it is red, 2 if the call is wrong or an exception
/// left the command (one German line on standard error says why), 130 or 143 if Ctrl-C or SIGTERM canceled the run. The
/// command "case" has a status for each outcome, see its help.

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/os/console.h"
#include "testing/lutestsuitehost/hostmain.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/settings/commandline.h"

namespace
{

struct SExecution
{
    int operator()(const Runner::SHelp& help) const
    {
        LbOs::WriteStandardOutput(LbEncoding::ToUtf8(help.text));
        return LuTestSuiteHost::c_Succeeded;
    }

    int operator()(const auto& options) const
    {
        const LuTestSuiteHost::CWork work;
        try
        {
            return Runner::Execute(options);
        }
        catch (const LbException& exception)
        {
            if (exception.GetMessageText().empty())
            {
                throw;
            }
            // The message concerns the user's files, so it omits our source line.
            throw std::wstring(exception.GetMessageText());
        }
    }
};

int run(const LuTestSuiteHost::Arguments& arguments)
{
    // The library starts this program again as a child process that runs cases.
    if (LuTestSuiteHost::IsChild(arguments))
    {
        return LuTestSuiteHost::RunLibrary(arguments);
    }
    return std::visit(SExecution(), Runner::ReadCommandLine(arguments));
}

} // namespace

int main(int argumentCount, char** arguments)
{
    return LuTestSuiteHost::Main(argumentCount, arguments, &run);
}

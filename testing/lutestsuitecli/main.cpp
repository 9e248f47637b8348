/// The command-line host.
///
/// Exit status: 0 if the call succeeded, 1 if cases failed or the arguments were refused, 2 if an exception left the
/// library, a case ended the process, or standard output was lost. With status 2, one line on standard error says what
/// happened.

#include "testing/lutestsuitehost/hostmain.h"

namespace
{

int run(const LuTestSuiteHost::Arguments& arguments)
{
    LuTestSuiteHost::ChooseOutput();
    return LuTestSuiteHost::RunLibrary(arguments);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    return LuTestSuiteHost::Main(argumentCount, arguments, &run);
}

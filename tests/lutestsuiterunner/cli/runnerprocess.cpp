#include "tests/lutestsuiterunner/cli/runnerprocess.h"

#include "tests/support/places.h"

SHostRun RunRunner(const std::vector<std::wstring>& arguments, SHostOptions options)
{
    options.program = L"" LUTESTSUITE_RUNNER;
    return RunHost(arguments, options);
}

/// Output lines on a terminal.
#pragma once

#include "testing/lutestsuite/lutestsuiteout.h"

/// Renders bold, underline and colour as ANSI escape sequences on standard output.
class CConsoleOut : public LuTestSuiteOut::LuCustomOut
{
public:
    void Output(const LuTestSuiteOut& line) override;
};

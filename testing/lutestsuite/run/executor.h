/// Runs the case that a work buffer requests, in any process.
#pragma once

#include "testing/lutestsuite/run/children/workbuffer.h"

namespace LuTestSuiteRun
{

/// Creates the unit test, runs the sub-test and writes result, time and messages into the buffer. Never throws:
/// failures become the result. Any thread.
void ExecuteInBuffer(SWorkBuffer& buffer) noexcept;

} // namespace LuTestSuiteRun

/// Runs the case that a work buffer asks for, wherever the buffer is.
#pragma once

#include "testing/lutestsuite/run/children/workbuffer.h"

namespace LuTestSuiteRun
{

/// Creates the unit test, runs the sub-test and writes result, time and messages into the buffer. Nothing leaves: what
/// goes wrong becomes the result. Any thread.
void ExecuteInBuffer(SWorkBuffer& buffer) noexcept;

} // namespace LuTestSuiteRun

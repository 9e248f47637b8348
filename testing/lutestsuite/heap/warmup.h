/// Memory that the run-time takes once and keeps.
#pragma once

namespace LuTestSuite
{

/// Has the run-time take what it takes once for the calling thread, or for the process, so that it is no growth of the
/// first case that would: for an exception, a single call among threads, calendar times, messages of errors.
/// Does nothing when the thread is warm already.
void WarmUpThread();

} // namespace LuTestSuite

/// Makes the run-time allocate the memory that it allocates once and keeps.
#pragma once

namespace LuTestSuite
{

/// Triggers the one-time allocations of the run-time for the calling thread and the process (exceptions,
/// std::call_once, calendar times, error messages), so that they do not count as growth of the first case that needs
/// them. Does nothing if the thread is warm already.
void WarmUpThread();

} // namespace LuTestSuite

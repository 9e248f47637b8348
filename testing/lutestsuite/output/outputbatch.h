/// Several lines of output that go to the console at once.
#pragma once

#include "base/inoncopyable.h"

namespace LuTestSuite
{

/// What happens to a batch that is complete.
enum class EBatchEnd
{
    Write,
    Defer ///< the batch waits for the next output of any thread, or for WriteDeferredOutput
};

/// Collects the output of the calling thread and writes it to standard output in one piece. Until it is complete, other
/// threads that print wait. Custom outputs receive each line immediately; if there are any, nothing is collected.
class COutputBatch : public INonCopyable
{
public:
    explicit COutputBatch(EBatchEnd end = EBatchEnd::Write);
    ~COutputBatch();

private:
    const EBatchEnd m_end;
};

/// No effect if no batch waits. Any thread.
void WriteDeferredOutput();

} // namespace LuTestSuite

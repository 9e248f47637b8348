/// Collects lines of output and writes them to the console together.
#pragma once

#include "base/inoncopyable.h"

namespace LuTestSuite
{

/// What the end of a batch does.
enum class EBatchEnd
{
    Write,
    Defer ///< the next output of any thread, or WriteDeferredOutput, writes the batch
};

/// Collects the output of the calling thread while the object exists, then writes it to standard output in one piece or
/// defers it. Other threads that print wait until the object is destroyed. If there are custom outputs, nothing is
/// collected: all outputs receive each line immediately.
class COutputBatch : public INonCopyable
{
public:
    explicit COutputBatch(EBatchEnd end = EBatchEnd::Write);
    ~COutputBatch();

private:
    const EBatchEnd m_end;
};

/// Writes deferred batches; no effect if there are none. Any thread.
void WriteDeferredOutput();

} // namespace LuTestSuite

/// Several lines of output that go to the console at once.
#pragma once

#include "base/inoncopyable.h"

namespace LuTestSuite
{

/// Collects the output of the calling thread and writes it to standard output in one piece, at the latest in the
/// destructor. Until then other threads that print wait. Custom outputs receive each line immediately.
class COutputBatch : public INonCopyable
{
public:
    COutputBatch();
    ~COutputBatch();
};

} // namespace LuTestSuite

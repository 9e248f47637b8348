/// Several lines of output that go to the console at once.
#pragma once

#include "base/inoncopyable.h"

namespace LuTestSuite
{

/// What the calling thread prints while the object lives reaches standard output in one piece, at the object's end at
/// the latest. Other threads that print wait meanwhile. Custom outputs receive each line as ever.
class COutputBatch : public INonCopyable
{
public:
    COutputBatch();
    ~COutputBatch();
};

} // namespace LuTestSuite

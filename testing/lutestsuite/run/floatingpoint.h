/// The floating-point environment of a thread.
#pragma once

#include <cstdint>

#include "base/inoncopyable.h"

namespace LuTestSuiteRun
{

/// Records rounding, enabled exceptions and flags of the calling thread; the destructor restores them, but clears the
/// flags of the x87 unit. Takes a few nanoseconds, unlike fegetenv() and fesetenv(), which also leave registers of MMX
/// in use.
class CFloatingPointState : public INonCopyable
{
public:
    CFloatingPointState() noexcept;
    ~CFloatingPointState();

private:
    std::uint32_t m_vector;  ///< control and flags of SSE
    std::uint16_t m_control; ///< of the x87 unit
};

} // namespace LuTestSuiteRun

#include "testing/lutestsuite/run/floatingpoint.h"

#include <mmintrin.h>
#include <xmmintrin.h>

namespace LuTestSuiteRun
{

namespace
{

std::uint16_t getControl() noexcept
{
    std::uint16_t control = 0;
    __asm__ volatile("fnstcw %0" : "=m"(control));
    return control;
}

bool hasFlags() noexcept
{
    constexpr unsigned c_Flags = 0x7F;
    std::uint16_t status = 0;
    __asm__ volatile("fnstsw %0" : "=m"(status));
    return (status & c_Flags) != 0;
}

} // namespace

CFloatingPointState::CFloatingPointState() noexcept : m_vector(_mm_getcsr()), m_control(getControl()) {}

CFloatingPointState::~CFloatingPointState()
{
    // Clears the flags first: with a pending exception, the other instructions of the x87 unit would raise it.
    if (hasFlags())
    {
        __asm__ volatile("fnclex");
    }
    if (getControl() != m_control)
    {
        __asm__ volatile("fldcw %0" : : "m"(m_control));
    }
    // Otherwise the x87 unit would yield NaN after MMX instructions.
    _mm_empty();
    if (_mm_getcsr() != m_vector)
    {
        _mm_setcsr(m_vector);
    }
}

} // namespace LuTestSuiteRun

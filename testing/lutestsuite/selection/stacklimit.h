/// Checks that recursion in foreign code does not exceed the stack.
#pragma once

#include <cstddef>

namespace LuTestSuite
{

/// Thrown if the stack is exhausted.
struct CStackExhausted
{
};

/// The limit up to which the current thread may use its stack.
class CStackLimit
{
public:
    /// Construct it in the first function on a stack of `size` bytes. The last `spare` bytes are reserved for the
    /// recursion between two checks.
    CStackLimit(std::size_t size, std::size_t spare)
        : m_lowest(static_cast<const char*>(__builtin_frame_address(0)) - (size - spare))
    {
    }

    void Check() const
    {
        if (static_cast<const char*>(__builtin_frame_address(0)) < m_lowest)
        {
            throw CStackExhausted();
        }
    }

private:
    const char* m_lowest;
};

} // namespace LuTestSuite

/// A check that recursion in foreign code stays within its stack.
#pragma once

#include <cstddef>

namespace LuTestSuite
{

/// Thrown where the stack does not suffice.
struct CStackExhausted
{
};

/// How far down the stack of the present thread may be used.
class CStackLimit
{
public:
    /// For a stack of `size` bytes that the calling function has just begun to use. `spare` bytes at its end are left
    /// to the recursion between two checks.
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

/// File descriptors of the Linux side. Internal to base/os.
#pragma once

#include <cerrno>
#include <cstdint>
#include <initializer_list>
#include <utility>

#include <unistd.h>

namespace LbOs::Linux
{

/// Repeats a call that a signal interrupted.
template<typename F>
auto Retry(const F& call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
    {
        result = call();
    }
    return result;
}

/// An owned descriptor.
class CDescriptor
{
public:
    CDescriptor() = default;
    explicit CDescriptor(int number) : m_number(number) {}
    CDescriptor(CDescriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    CDescriptor& operator=(CDescriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~CDescriptor() { Reset(); }

    bool IsOpen() const noexcept { return m_number >= 0; }
    int Get() const noexcept { return m_number; }

    void Reset()
    {
        if (IsOpen())
        {
            close(std::exchange(m_number, -1));
        }
    }

    /// Gives up the number without closing the descriptor.
    void Release() noexcept { m_number = -1; }

private:
    int m_number = -1;
};

/// Takes ownership of a newly opened descriptor; a negative number gives an empty result. The result is never 0 to 2:
/// if a standard stream is closed, the process's output would otherwise go into this descriptor. Started programs do
/// not inherit it.
CDescriptor AboveStandard(int number);

inline constexpr int c_WaitTimedOut = -1;
inline constexpr int c_WaitFailed = -2;
inline constexpr std::uint32_t c_WaitInfinite = 0xFFFFFFFFU;

/// Waits for at most two descriptors. Returns the index of the first readable one, or one of the constants. The
/// descriptor of a process is readable when the process has ended. Negative descriptors are ignored.
int WaitReadable(std::initializer_list<int> descriptors, std::uint32_t milliseconds);

} // namespace LbOs::Linux

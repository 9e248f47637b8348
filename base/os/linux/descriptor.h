/// File descriptors of the Linux side. Internal to base/os.
#pragma once

#include <cerrno>
#include <cstdint>
#include <initializer_list>
#include <utility>

#include <unistd.h>

namespace LbOs::Linux
{

/// Repeats a call that signals break off.
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

    /// Forgets a number that is not, or no longer, the owner's.
    void Release() noexcept { m_number = -1; }

private:
    int m_number = -1;
};

/// The owner of a descriptor that was just opened, negative: of none. It is none of the standard streams': where those
/// are closed, what the process prints would else go into it. Closed by each program that is started.
CDescriptor AboveStandard(int number);

inline constexpr int c_WaitTimedOut = -1;
inline constexpr int c_WaitFailed = -2;
inline constexpr std::uint32_t c_WaitInfinite = 0xFFFFFFFFU;

/// Index of the first of at most two descriptors that can be read (a process's: that has ended), or one of the
/// constants. Negative descriptors are passed over.
int WaitReadable(std::initializer_list<int> descriptors, std::uint32_t milliseconds);

} // namespace LbOs::Linux

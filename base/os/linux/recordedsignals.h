/// The signal state that RecordSignals has recorded. Internal to the Linux side.
#pragma once

#include <cstdint>
#include <optional>

namespace LbOs::Linux
{

/// Blocked and ignored signals, as kernel sets: bit 0 is signal 1.
struct SSignals
{
    std::uint64_t blocked = 0;
    std::uint64_t ignored = 0;
};

/// The bit of a signal in a kernel set.
constexpr std::uint64_t ToSignalBit(int signal)
{
    return std::uint64_t{1} << static_cast<unsigned>(signal - 1);
}

/// The kernel's record of a signal action.
struct SAction
{
    void (*handler)(int);
    std::uint64_t flags;
    void (*restorer)();
    std::uint64_t blocked;
};

/// Empty before RecordSignals. Any thread, also in a fork.
std::optional<SSignals> GetRecordedSignals() noexcept;

} // namespace LbOs::Linux

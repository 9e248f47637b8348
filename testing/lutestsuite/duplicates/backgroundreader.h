/// Reads ahead on a thread.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <limits>
#include <mutex>
#include <thread>

#include "base/inoncopyable.h"

namespace LuTestSuite
{

/// A number that one thread increases and another thread waits for.
class CProgress
{
public:
    /// May also decrease the number while no thread waits.
    void Set(std::uint64_t value);

    /// Waits until the number is at least `value`, and returns it.
    std::uint64_t Await(std::uint64_t value);

private:
    std::atomic<std::uint64_t> m_value = 0;
    std::mutex m_mutex;
    std::condition_variable m_changed;
};

/// Reads one source after another, in pieces, on its own thread. Used by one other thread.
class CBackgroundReader : public INonCopyable
{
public:
    /// Reads up to the given number of bytes into a buffer; fewer only at the end. May throw.
    using Source = std::function<std::size_t(void* buffer, std::size_t size)>;

    /// Throws std::system_error if the thread cannot be started.
    CBackgroundReader();

    /// Precondition: no read is in progress, see AwaitEnd.
    ~CBackgroundReader();

    /// Starts reading `size` bytes. Precondition: no read is in progress.
    void Start(Source source, char* buffer, std::size_t size);

    /// Waits until at least the first `count` bytes are read, and returns how many are. If the source has fewer bytes,
    /// throws LbException or what the source threw; then no read is in progress.
    std::size_t Await(std::size_t count);

    /// Waits until no read is in progress, and returns the number of bytes read. Throws what the source threw.
    std::size_t AwaitEnd();

private:
    static constexpr std::uint64_t sc_uiEnd = std::numeric_limits<std::uint64_t>::max();

    void work();
    void read();

    Source m_source; ///< empty: the thread ends
    char* m_buffer = nullptr;
    std::size_t m_size = 0;
    std::size_t m_total = 0;
    std::exception_ptr m_failure;
    std::uint64_t m_requestCount = 0;
    CProgress m_requests;
    CProgress m_bytes;
    std::thread m_thread; ///< last, because it uses all other members
};

} // namespace LuTestSuite

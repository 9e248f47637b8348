/// Reading ahead of whoever uses the bytes.
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

/// A number that one thread raises and another waits for.
class CProgress
{
public:
    /// May lower it, too, while nobody waits.
    void Set(std::uint64_t value);

    /// Gives the number when it is `value` or more.
    std::uint64_t Await(std::uint64_t value);

private:
    std::atomic<std::uint64_t> m_value = 0;
    std::mutex m_mutex;
    std::condition_variable m_changed;
};

/// Reads one thing after the other, each by pieces, in a thread of its own. Used by one other thread.
class CBackgroundReader : public INonCopyable
{
public:
    /// Reads up to so many bytes to a place; fewer only at the end. May throw.
    using Source = std::function<std::size_t(void* buffer, std::size_t size)>;

    /// Throws std::system_error when there is no thread to be had.
    CBackgroundReader();

    /// Only when nothing is being read, see AwaitEnd.
    ~CBackgroundReader();

    /// Begins to read `size` bytes, when nothing is being read.
    void Start(Source source, char* buffer, std::size_t size);

    /// Waits until the first `count` bytes or more are there, and gives how many are. When there are never so many it
    /// throws LbException, or what the source has thrown, and nothing is being read any more.
    std::size_t Await(std::size_t count);

    /// Waits until nothing is being read, and gives how many bytes there are. Throws what the source has thrown.
    std::size_t AwaitEnd();

private:
    static constexpr std::uint64_t sc_uiEnd = std::numeric_limits<std::uint64_t>::max();

    void work();
    void read();

    Source m_source; ///< none: the thread ends
    char* m_buffer = nullptr;
    std::size_t m_size = 0;
    std::size_t m_total = 0;
    std::exception_ptr m_failure;
    std::uint64_t m_requestCount = 0;
    CProgress m_requests;
    CProgress m_bytes;
    std::thread m_thread; ///< the last member: it uses all others
};

} // namespace LuTestSuite

#include "testing/lutestsuite/duplicates/backgroundreader.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/lbexception.h"

namespace LuTestSuite
{

void CProgress::Set(std::uint64_t value)
{
    {
        const std::lock_guard lock(m_mutex);
        m_value = value;
    }
    m_changed.notify_one();
}

std::uint64_t CProgress::Await(std::uint64_t value)
{
    // Sleeping and waking up would take as long as reading a piece.
    constexpr std::chrono::microseconds c_Spinning(200);
    const auto end = std::chrono::steady_clock::now() + c_Spinning;
    while (m_value < value && std::chrono::steady_clock::now() < end)
    {
        std::this_thread::yield();
    }
    if (const std::uint64_t present = m_value; present >= value)
    {
        return present;
    }
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this, value] { return m_value >= value; });
    return m_value;
}

CBackgroundReader::CBackgroundReader() : m_thread([this] { work(); }) {}

CBackgroundReader::~CBackgroundReader()
{
    m_source = nullptr;
    m_requests.Set(m_requestCount + 1);
    m_thread.join();
}

void CBackgroundReader::Start(Source source, char* buffer, std::size_t size)
{
    m_source = std::move(source);
    m_buffer = buffer;
    m_size = size;
    m_bytes.Set(0);
    m_requests.Set(++m_requestCount);
}

std::size_t CBackgroundReader::Await(std::size_t count)
{
    const std::uint64_t bytes = m_bytes.Await(count);
    if (bytes != sc_uiEnd)
    {
        return static_cast<std::size_t>(bytes);
    }
    // Bytes that were read count, even if a failure follows.
    if (m_total >= count)
    {
        return m_total;
    }
    AwaitEnd();
    throw LbException();
}

std::size_t CBackgroundReader::AwaitEnd()
{
    m_bytes.Await(sc_uiEnd);
    if (m_failure)
    {
        std::rethrow_exception(m_failure);
    }
    return m_total;
}

void CBackgroundReader::work()
{
    for (std::uint64_t request = 1;; ++request)
    {
        m_requests.Await(request);
        if (!m_source)
        {
            return;
        }
        m_total = 0;
        m_failure = nullptr;
        try
        {
            read();
        }
        catch (...)
        {
            m_failure = std::current_exception();
        }
        m_bytes.Set(sc_uiEnd);
    }
}

void CBackgroundReader::read()
{
    // A piece that fits into the processor's cache is passed quickly to another thread.
    constexpr std::size_t c_PieceSize = 64 * 1024;
    while (m_total < m_size)
    {
        const std::size_t size = std::min(c_PieceSize, m_size - m_total);
        const std::size_t count = m_source(m_buffer + m_total, size);
        m_total += count;
        if (count < size)
        {
            return;
        }
        m_bytes.Set(m_total);
    }
}

} // namespace LuTestSuite

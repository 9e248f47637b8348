/// Files are read by a thread of their own while the beginning is hashed: one thread that does both takes twice as long
/// as reading takes. Where files are small the hand-over would cost more than it saves.

#include "testing/lutestsuite/modes/filechecksums.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <limits>
#include <mutex>
#include <system_error>
#include <thread>

#include "base/lbexception.h"

namespace
{

constexpr std::size_t c_PieceSize = 64 * 1024;
constexpr std::size_t c_LargeFile = 4 * c_PieceSize;

/// A number that one thread raises and another waits for.
class CProgress
{
public:
    /// May lower it, too, while nobody waits.
    void Set(std::uint64_t value)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_value = value;
        }
        m_changed.notify_one();
    }

    /// Gives the number when it is `value` or more.
    std::uint64_t Await(std::uint64_t value)
    {
        // Falling asleep and waking up would take as long as a piece of a file does.
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

private:
    std::atomic<std::uint64_t> m_value = 0;
    std::mutex m_mutex;
    std::condition_variable m_changed;
};

} // namespace

namespace LuTestSuite
{

/// Reads a file in a thread of its own.
class CFileReader : public INonCopyable
{
public:
    ~CFileReader()
    {
        m_file = nullptr;
        m_requests.Set(m_requestCount + 1);
        m_thread.join();
    }

    /// Both stay as they are until the reader has ended, see AwaitEnd.
    void Start(LuStreamReadBinaryFile& file, char* buffer, std::size_t size)
    {
        m_file = &file;
        m_buffer = buffer;
        m_size = size;
        m_bytes.Set(0);
        m_requests.Set(++m_requestCount);
    }

    /// Waits until the first `count` bytes are there and gives how many are. Throws when there are never so many; then
    /// the reader has ended.
    std::size_t Await(std::size_t count)
    {
        const std::uint64_t bytes = m_bytes.Await(count);
        if (bytes != sc_uiEnd)
        {
            return static_cast<std::size_t>(bytes);
        }
        if (AwaitEnd() < count)
        {
            throw LbException();
        }
        return m_total;
    }

    /// Waits until nothing is left to read, and gives how many bytes there are. Throws when reading failed.
    std::size_t AwaitEnd()
    {
        m_bytes.Await(sc_uiEnd);
        if (m_failure)
        {
            std::rethrow_exception(m_failure);
        }
        return m_total;
    }

private:
    static constexpr std::uint64_t sc_uiEnd = std::numeric_limits<std::uint64_t>::max();

    void work()
    {
        for (std::uint64_t request = 1;; ++request)
        {
            m_requests.Await(request);
            if (m_file == nullptr)
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

    void read()
    {
        while (m_total < m_size)
        {
            const std::size_t size = std::min(c_PieceSize, m_size - m_total);
            const std::size_t count = m_file->Read(m_buffer + m_total, size);
            m_total += count;
            if (count < size)
            {
                return;
            }
            m_bytes.Set(m_total);
        }
    }

    LuStreamReadBinaryFile* m_file = nullptr; ///< none: the thread ends
    char* m_buffer = nullptr;
    std::size_t m_size = 0;
    std::size_t m_total = 0;
    std::exception_ptr m_failure;
    std::uint64_t m_requestCount = 0;
    CProgress m_requests;
    CProgress m_bytes;
    std::thread m_thread{[this] { work(); }}; ///< the last member: it uses all others
};

CFileChecksums::CFileChecksums() = default;
CFileChecksums::~CFileChecksums() = default;

std::optional<LuMurmurHash3::S128> CFileChecksums::Get(const std::wstring& path)
{
    LuStreamReadBinaryFile file(path);
    const std::uint64_t size = file.GetSize();
    if (size > std::numeric_limits<std::uint32_t>::max())
    {
        return std::nullopt;
    }
    // One byte more than the file had shows that it grew meanwhile.
    reserve(static_cast<std::size_t>(size) + 1);
    return size >= c_LargeFile && hasReader() ? computeWhileReading(file, static_cast<std::uint32_t>(size))
                                              : readAndCompute(file, static_cast<std::uint32_t>(size));
}

bool CFileChecksums::hasReader()
{
    if (!m_reader && std::thread::hardware_concurrency() > 1)
    {
        try
        {
            m_reader = std::make_unique<CFileReader>();
        }
        catch (const std::system_error&)
        {
            // A system short of threads: one does both as well.
        }
    }
    return m_reader != nullptr;
}

void CFileChecksums::reserve(std::size_t size)
{
    if (m_capacity < size)
    {
        m_capacity = 0;
        // First, or there would be memory for two files.
        m_buffer.reset();
        m_buffer = std::make_unique_for_overwrite<char[]>(size);
        m_capacity = size;
    }
}

LuMurmurHash3::S128 CFileChecksums::readAndCompute(LuStreamReadBinaryFile& file, std::uint32_t size)
{
    if (file.Read(m_buffer.get(), std::size_t{size} + 1) != size)
    {
        throw LbException();
    }
    return LuMurmurHash3::GetOptimizedChecksum128(m_buffer.get(), size, 0);
}

LuMurmurHash3::S128 CFileChecksums::computeWhileReading(LuStreamReadBinaryFile& file, std::uint32_t size)
{
    m_reader->Start(file, m_buffer.get(), std::size_t{size} + 1);
    const LuMurmurHash3::S128 checksum = LuMurmurHash3::GetOptimizedChecksum128(
        m_buffer.get(), size, 0, [this](std::size_t count) { return m_reader->Await(count); });
    if (m_reader->AwaitEnd() != size)
    {
        throw LbException();
    }
    return checksum;
}

} // namespace LuTestSuite

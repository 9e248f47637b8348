#include "testing/lutestsuite/duplicates/backgroundreader.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbevent.h"
#include "base/lbexception.h"

namespace
{

using LuTestSuite::CBackgroundReader;

constexpr std::size_t c_Piece = 64 * 1024;

std::string makeContent(std::size_t size)
{
    std::string content(size, '\0');
    for (std::size_t index = 0; index < size; ++index)
    {
        content[index] = static_cast<char>(index * 31 + index / 251);
    }
    return content;
}

/// Provides a text piece by piece.
CBackgroundReader::Source makeSource(const std::string& content)
{
    return [&content, position = std::size_t{0}](void* buffer, std::size_t size) mutable {
        const std::size_t count = std::min(size, content.size() - position);
        std::memcpy(buffer, content.data() + position, count);
        position += count;
        return count;
    };
}

class BackgroundReaderThread : public testing::Test
{
protected:
    BackgroundReaderThread() : m_buffer(20 * c_Piece) {}

    std::vector<char> m_buffer;
    CBackgroundReader m_reader;
};

TEST_F(BackgroundReaderThread, ReadsTheRequestedFile)
{
    const std::string content = makeContent(5 * c_Piece);
    m_reader.Start(makeSource(content), m_buffer.data(), 3 * c_Piece);

    EXPECT_EQ(m_reader.AwaitEnd(), 3 * c_Piece);
    EXPECT_EQ(std::string_view(m_buffer.data(), 3 * c_Piece), std::string_view(content).substr(0, 3 * c_Piece));
    EXPECT_EQ(m_buffer[3 * c_Piece], 0);
}

TEST_F(BackgroundReaderThread, ReadsOneAfterTheOther)
{
    for (const std::size_t size : {c_Piece - 1, std::size_t{0}, 3 * c_Piece + 5, c_Piece, 10 * c_Piece})
    {
        const std::string content = makeContent(size);
        m_reader.Start(makeSource(content), m_buffer.data(), size + 1);

        EXPECT_EQ(m_reader.AwaitEnd(), size);
        EXPECT_EQ(std::string_view(m_buffer.data(), size), content);
    }
}

/// The source waits until its earlier bytes are used: if the reader held them back, the test would never end.
TEST_F(BackgroundReaderThread, ProvidesTheAvailableBytes)
{
    const std::string content = makeContent(4 * c_Piece);
    LbEvent used;
    m_reader.Start(
        [source = makeSource(content), &used, isFirst = true](void* buffer, std::size_t size) mutable {
            if (!isFirst)
            {
                used.Wait();
            }
            isFirst = false;
            return source(buffer, size);
        },
        m_buffer.data(), content.size());
    for (std::size_t there = 0; there < content.size();)
    {
        const std::size_t before = there;
        there = m_reader.Await(there + 1);
        EXPECT_EQ(std::string_view(m_buffer.data() + before, there - before),
                  std::string_view(content).substr(before, there - before));
        used.Set();
    }

    EXPECT_EQ(m_reader.AwaitEnd(), content.size());
}

TEST_F(BackgroundReaderThread, ReportsFewerBytes)
{
    const std::string content = makeContent(2 * c_Piece + 10);
    m_reader.Start(makeSource(content), m_buffer.data(), 4 * c_Piece);

    EXPECT_GE(m_reader.Await(content.size()), content.size());
    EXPECT_THROW(m_reader.Await(content.size() + 1), LbException);
    EXPECT_EQ(m_reader.AwaitEnd(), content.size());
}

TEST_F(BackgroundReaderThread, PassesOnFailuresAndReadsTheNext)
{
    const std::string content = makeContent(3 * c_Piece);
    m_reader.Start(
        [source = makeSource(content), calls = 0](void* buffer, std::size_t size) mutable {
            return calls++ == 2 ? throw std::runtime_error("away") : source(buffer, size);
        },
        m_buffer.data(), content.size());

    EXPECT_THROW(m_reader.Await(content.size()), std::runtime_error);
    EXPECT_THROW(m_reader.AwaitEnd(), std::runtime_error);

    m_reader.Start(makeSource(content), m_buffer.data(), content.size());
    EXPECT_EQ(m_reader.AwaitEnd(), content.size());
}

/// Bytes read before a failure count, even if they are requested after it.
TEST_F(BackgroundReaderThread, ProvidesTheBytesReadBeforeAFailure)
{
    const std::string content = makeContent(3 * c_Piece);
    m_reader.Start(
        [source = makeSource(content), calls = 0](void* buffer, std::size_t size) mutable {
            return calls++ == 2 ? throw std::runtime_error("away") : source(buffer, size);
        },
        m_buffer.data(), content.size());
    EXPECT_THROW(m_reader.AwaitEnd(), std::runtime_error);

    EXPECT_EQ(m_reader.Await(1), 2 * c_Piece);
    EXPECT_EQ(m_reader.Await(2 * c_Piece), 2 * c_Piece);
    EXPECT_EQ(std::string_view(m_buffer.data(), 2 * c_Piece), std::string_view(content).substr(0, 2 * c_Piece));
    EXPECT_THROW(m_reader.Await(2 * c_Piece + 1), std::runtime_error);
}

TEST_F(BackgroundReaderThread, WaitsForASlowFile)
{
    LbEvent isWanted;
    m_reader.Start(
        [&isWanted](void* /*buffer*/, std::size_t size) {
            isWanted.Wait();
            return size;
        },
        m_buffer.data(), 10);
    std::thread other([&isWanted] { isWanted.Set(); });

    EXPECT_EQ(m_reader.Await(10), 10U);
    other.join();
}

} // namespace

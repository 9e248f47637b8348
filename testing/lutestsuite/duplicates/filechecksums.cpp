/// A second thread reads large files while this one hashes: doing both in one thread takes twice as long as reading.
/// For small files the thread's overhead exceeds the gain.

#include "testing/lutestsuite/duplicates/filechecksums.h"

#include <limits>
#include <system_error>
#include <thread>

#include "base/lbexception.h"
#include "testing/lutestsuite/duplicates/backgroundreader.h"

namespace
{

constexpr std::uint64_t c_LargeFile = 256 * 1024;

} // namespace

namespace LuTestSuite
{

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
    // One byte more than the file's size shows whether the file has grown meanwhile.
    reserve(static_cast<std::size_t>(size) + 1);
    return size >= c_LargeFile && hasReader() ? computeWhileReading(file, static_cast<std::uint32_t>(size))
                                              : readAndCompute(file, static_cast<std::uint32_t>(size));
}

LuMurmurHash3::S128 CFileChecksums::GetOfBeginning(const std::wstring& path)
{
    LuStreamReadBinaryFile file(path);
    reserve(sc_uiBeginning);
    const std::size_t size = file.Read(m_buffer.get(), sc_uiBeginning);
    return LuMurmurHash3::GetOptimizedChecksum128(m_buffer.get(), static_cast<std::uint32_t>(size), 0);
}

bool CFileChecksums::hasReader()
{
    if (!m_reader && std::thread::hardware_concurrency() > 1)
    {
        try
        {
            m_reader = std::make_unique<CBackgroundReader>();
        }
        catch (const std::system_error&)
        {
            // If no thread can be started, this thread does both.
        }
    }
    return m_reader != nullptr;
}

void CFileChecksums::reserve(std::size_t size)
{
    if (m_capacity < size)
    {
        m_capacity = 0;
        // Released first, so that memory never holds two files.
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
    m_reader->Start([&file](void* buffer, std::size_t count) { return file.Read(buffer, count); }, m_buffer.get(),
                    std::size_t{size} + 1);
    const LuMurmurHash3::S128 checksum = LuMurmurHash3::GetOptimizedChecksum128(
        m_buffer.get(), size, 0, [this](std::size_t count) { return m_reader->Await(count); });
    if (m_reader->AwaitEnd() != size)
    {
        throw LbException();
    }
    return checksum;
}

} // namespace LuTestSuite

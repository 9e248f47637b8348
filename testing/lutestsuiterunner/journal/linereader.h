/// Lines of records, one after another.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace Runner
{

/// Fills a buffer of the size given, and returns how many bytes it got; 0 at the end.
using ReadBytes = std::function<std::size_t(char* buffer, std::size_t size)>;

/// Where something is damaged.
struct SDamage
{
    std::uint64_t line;   ///< from 1
    std::uint64_t offset; ///< of the line's first byte
    const wchar_t* what;  ///< German
};

/// Reads records in constant memory. A record that is not complete at the very end, as a process leaves it that dies
/// while it writes, is the torn tail and no damage. One thread at a time.
class CLineReader
{
public:
    /// No record is longer than `largestRecord` bytes.
    CLineReader(ReadBytes read, std::size_t largestRecord);

    /// The next record, valid until the next call; false behind the last one. Throws SDamage.
    bool Next(std::string_view& record);

    /// Of the record that was read last: its number in the file, from 1, which is its line's number, too; and the
    /// offset of its line.
    std::uint64_t GetSequence() const { return m_sequence; }
    std::uint64_t GetOffset() const { return m_offset; }

    /// Number of bytes behind the last record; final once Next returned false.
    std::uint64_t GetTailSize() const { return m_tailSize; }

private:
    std::string_view getText() const { return std::string_view(m_buffer).substr(m_start, m_end - m_start); }
    bool readMore();
    bool findLineEnd(std::size_t& size);
    bool endInTail();
    [[noreturn]] void fail(const wchar_t* what) const;

    ReadBytes m_read;
    std::size_t m_longestLine;
    std::string m_buffer;
    std::size_t m_start = 0; ///< of what is not yet read
    std::size_t m_end = 0;
    std::uint64_t m_nextOffset = 0; ///< of m_start in the file
    std::uint64_t m_offset = 0;
    std::uint64_t m_sequence = 0;
    std::uint64_t m_tailSize = 0;
};

} // namespace Runner

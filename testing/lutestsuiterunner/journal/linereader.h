/// Lines of records, one after another.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace Runner
{

/// Fills a buffer of the given size, and returns the number of bytes read; 0 at the end.
using ReadBytes = std::function<std::size_t(char* buffer, std::size_t size)>;

/// The place of damage.
struct SDamage
{
    std::uint64_t line;   ///< from 1
    std::uint64_t offset; ///< of the line's first byte
    const wchar_t* what;  ///< German
};

/// Reads records in constant memory. If a process died while writing, the file ends with an incomplete record: its
/// tail, which is not damage. The file may grow meanwhile: it ends where `read` first returns 0. One thread at a time.
class CLineReader
{
public:
    /// No record is longer than `largestRecord` bytes. `sequence` is the number of the record before the first byte
    /// that `read` gives.
    CLineReader(ReadBytes read, std::size_t largestRecord, std::uint64_t sequence = 0);

    /// The next record, valid until the next call; false after the last one. Throws SDamage.
    bool Next(std::string_view& record);

    /// The number of the last record that was read, counted from 1 in the file, so that it is also the number of its
    /// line; and the offset of that line.
    std::uint64_t GetSequence() const { return m_sequence; }
    std::uint64_t GetOffset() const { return m_offset; }

    /// Offset of the byte after the last record that was read, counted from the first byte that `read` returned.
    std::uint64_t GetEnd() const { return m_nextOffset; }

    /// Number of bytes after the last record; final once Next returned false.
    std::uint64_t GetTailSize() const { return m_tailSize; }

    /// True if the tail ends in a line end but is no valid record: an incomplete write, or damage. Final once Next
    /// returned false.
    bool IsLastLineBad() const { return m_isLastLineBad; }

private:
    std::string_view getText() const { return std::string_view(m_buffer).substr(m_start, m_end - m_start); }
    bool readMore();
    bool findLineEnd(std::size_t& size);
    bool endInTail();
    [[noreturn]] void fail(const wchar_t* what) const;

    ReadBytes m_read;
    std::size_t m_longestLine;
    std::string m_buffer;
    std::size_t m_start = 0; ///< of the bytes in m_buffer that are not used yet
    std::size_t m_end = 0;
    bool m_isAtEnd = false;         ///< no more calls of m_read
    std::uint64_t m_nextOffset = 0; ///< of m_start in the file
    std::uint64_t m_offset = 0;
    std::uint64_t m_sequence = 0;
    std::uint64_t m_tailSize = 0;
    bool m_isLastLineBad = false;
};

} // namespace Runner

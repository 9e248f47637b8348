#include "testing/lutestsuiterunner/journal/linereader.h"

#include <cstring>
#include <utility>

#include "testing/lutestsuiterunner/journal/line.h"

namespace Runner
{

namespace
{

constexpr std::size_t c_Piece = std::size_t{256} * 1024;

/// The largest number of bytes of a line apart from its record.
constexpr std::size_t c_Frame = 128;

/// True if other text follows a whole record before the next line feed: the file has lost a line feed.
bool isFollowed(const SLine& line, std::string_view text)
{
    constexpr std::size_t c_EndSize = 2;
    const auto rest = static_cast<std::size_t>(text.data() + text.size() - line.record.data()) - line.record.size();
    return line.state == ELineState::Unended && rest > c_EndSize;
}

} // namespace

CLineReader::CLineReader(ReadBytes read, std::size_t largestRecord, std::uint64_t sequence)
    : m_read(std::move(read)), m_longestLine(largestRecord + c_Frame), m_sequence(sequence)
{
}

bool CLineReader::Next(std::string_view& record)
{
    m_offset = m_nextOffset;
    std::size_t size = 0;
    if (!findLineEnd(size))
    {
        return endInTail();
    }
    const std::string_view text = getText().substr(0, size);
    const SLine line = ReadLine(text);
    if (line.state == ELineState::Good)
    {
        if (line.sequence != m_sequence + 1)
        {
            fail(L"Einträge fehlen oder stehen doppelt");
        }
        ++m_sequence;
        m_start += size;
        m_nextOffset += size;
        record = line.record;
        return true;
    }
    if (isFollowed(line, text) || getText().size() > size || readMore())
    {
        fail(L"Länge oder Prüfsumme des Eintrags stimmt nicht");
    }
    m_isLastLineBad = true;
    return endInTail();
}

/// Reads until there is a whole line; false if the file ends or the line becomes too long before that.
bool CLineReader::findLineEnd(std::size_t& size)
{
    std::size_t searched = 0;
    while (true)
    {
        const std::string_view text = getText();
        const std::size_t end = text.find('\n', searched);
        if (end != std::string_view::npos)
        {
            size = end + 1;
            return true;
        }
        searched = text.size();
        if (searched > m_longestLine || !readMore())
        {
            return false;
        }
    }
}

bool CLineReader::readMore()
{
    if (m_isAtEnd)
    {
        return false;
    }
    if (m_start > 0)
    {
        std::memmove(m_buffer.data(), m_buffer.data() + m_start, m_end - m_start);
        m_end -= std::exchange(m_start, 0);
    }
    if (m_buffer.size() < m_end + c_Piece)
    {
        m_buffer.resize(m_end + c_Piece);
    }
    const std::size_t count = m_read(m_buffer.data() + m_end, c_Piece);
    m_end += count;
    m_isAtEnd = count == 0;
    return !m_isAtEnd;
}

/// Counts the rest of the file as its tail; fails if the rest cannot come from an incomplete write.
bool CLineReader::endInTail()
{
    const std::string_view rest = getText();
    if (isFollowed(ReadLine(rest), rest))
    {
        fail(L"Der Eintrag endet nicht mit seiner Zeile");
    }
    m_tailSize = rest.size();
    // The tail may contain zeros of any length: some file systems leave them when the machine crashes.
    while (true)
    {
        m_start = m_end = 0;
        if (!readMore())
        {
            return false;
        }
        if (getText().find('\n') != std::string_view::npos)
        {
            fail(L"Die Zeile ist kein Eintrag");
        }
        m_tailSize += getText().size();
    }
}

void CLineReader::fail(const wchar_t* what) const
{
    throw SDamage{m_sequence + 1, m_offset, what};
}

} // namespace Runner

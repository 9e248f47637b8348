#include "testing/lutestsuiterunner/journal/linereader.h"

#include <cstring>
#include <utility>

#include "testing/lutestsuiterunner/journal/line.h"

namespace Runner
{

namespace
{

constexpr std::size_t c_Piece = std::size_t{256} * 1024;

/// More than a line has beside its record.
constexpr std::size_t c_Frame = 128;

/// A whole record that is followed by more than its own end: a line feed inside the file is lost.
bool isFollowed(const SLine& line, std::string_view text)
{
    constexpr std::size_t c_EndSize = 2;
    const auto rest = static_cast<std::size_t>(text.data() + text.size() - line.record.data()) - line.record.size();
    return line.state == ELineState::Unended && rest > c_EndSize;
}

} // namespace

CLineReader::CLineReader(ReadBytes read, std::size_t largestRecord)
    : m_read(std::move(read)), m_longestLine(largestRecord + c_Frame)
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
    return endInTail();
}

/// Reads until there is a whole line; false if there is none before the end or the limit of lines.
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
    return count > 0;
}

/// Takes all that is left for the tail, if nothing but a torn record can have left it.
bool CLineReader::endInTail()
{
    const std::string_view rest = getText();
    if (isFollowed(ReadLine(rest), rest))
    {
        fail(L"Der Eintrag endet nicht mit seiner Zeile");
    }
    m_tailSize = rest.size();
    // However long it is: some file systems leave zeros behind when the machine is lost.
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

#include "testing/lutestsuiterunner/journal/line.h"

#include <charconv>

#include "testing/lutestsuiterunner/journal/checksum.h"
#include "testing/lutestsuiterunner/journal/numbertext.h"

namespace Runner
{

namespace
{

constexpr std::string_view c_Sequence = R"({"n":)";
constexpr std::string_view c_Length = R"(,"l":)";
constexpr std::string_view c_Checksum = R"(,"c":")";
constexpr std::string_view c_Record = R"(","r":)";
constexpr std::string_view c_End = "}\n";

/// Removes a prefix from the front of the text.
class CFront
{
public:
    explicit CFront(std::string_view text) : m_text(text) {}

    bool Take(std::string_view literal)
    {
        const bool isThere = m_text.starts_with(literal);
        m_text.remove_prefix(isThere ? literal.size() : 0);
        return isThere;
    }

    /// Accepts no leading zeros, so that a number has only one spelling.
    bool Take(std::uint64_t& number)
    {
        const auto [end, error] = std::from_chars(m_text.data(), m_text.data() + m_text.size(), number);
        const auto length = static_cast<std::size_t>(end - m_text.data());
        const bool isNumber = error == std::errc() && (m_text.front() != '0' || length == 1);
        m_text.remove_prefix(isNumber ? length : 0);
        return isNumber;
    }

    bool Take(std::size_t length, std::string_view& part)
    {
        if (m_text.size() < length)
        {
            return false;
        }
        part = m_text.substr(0, length);
        m_text.remove_prefix(length);
        return true;
    }

    std::string_view GetRest() const { return m_text; }

private:
    std::string_view m_text;
};

bool isChecksum(std::string_view digits, std::string_view record)
{
    // Compares text, so that a capital digit counts as damage.
    const auto expected = ToHexadecimal(GetChecksum(record));
    return digits == std::string_view(expected.data(), expected.size());
}

} // namespace

void MakeLine(std::uint64_t sequence, std::string_view record, std::string& line)
{
    line.assign(c_Sequence);
    AppendNumber(sequence, line);
    line += c_Length;
    AppendNumber(record.size(), line);
    line += c_Checksum;
    AppendHexadecimal(GetChecksum(record), line);
    line += c_Record;
    line += record;
    line += c_End;
}

SLine ReadLine(std::string_view text)
{
    SLine line;
    CFront front(text);
    std::uint64_t length = 0;
    std::string_view checksum;
    const bool isWhole = front.Take(c_Sequence) && front.Take(line.sequence) && front.Take(c_Length) &&
                         front.Take(length) && front.Take(c_Checksum) && front.Take(c_ChecksumDigits, checksum) &&
                         front.Take(c_Record) && front.Take(length, line.record);
    if (isWhole && isChecksum(checksum, line.record))
    {
        line.state = front.GetRest() == c_End ? ELineState::Good : ELineState::Unended;
    }
    return line;
}

} // namespace Runner

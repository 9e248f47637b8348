/// The line of a record: {"n":<sequence>,"l":<bytes of r>,"c":"<checksum of r>","r":<r>} and a line feed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Runner
{

/// The largest record in a journal, in bytes of "r".
inline constexpr std::size_t c_LargestRecord = 65536;

/// Replaces `line` by the line of a record.
void MakeLine(std::uint64_t sequence, std::string_view record, std::string& line);

enum class ELineState
{
    Good,
    Unended, ///< the record is complete, but other bytes are in place of its line end
    Bad      ///< not a line, or the checksum is wrong
};

struct SLine
{
    ELineState state = ELineState::Bad;
    std::uint64_t sequence = 0;
    std::string_view record; ///< a part of the text
};

/// Parses the line at the beginning of `text`. It is good only if it is the whole text.
SLine ReadLine(std::string_view text);

} // namespace Runner

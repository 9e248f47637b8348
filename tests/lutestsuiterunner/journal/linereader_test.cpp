#include "testing/lutestsuiterunner/journal/linereader.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "testing/lutestsuiterunner/journal/line.h"

namespace
{

std::string makeLine(std::uint64_t sequence)
{
    std::string line;
    Runner::MakeLine(sequence, R"({"t":"start"})", line);
    return line;
}

/// A file that another process appends to. Each read returns one piece; an empty piece is the current end of the file.
class CGrowingFile
{
public:
    explicit CGrowingFile(std::vector<std::string> pieces) : m_pieces(std::move(pieces)) {}

    std::size_t Read(char* buffer, std::size_t size)
    {
        if (m_next == m_pieces.size())
        {
            return 0;
        }
        const std::string& piece = m_pieces[m_next++];
        return piece.copy(buffer, size);
    }

private:
    std::vector<std::string> m_pieces;
    std::size_t m_next = 0;
};

/// The number of records until the end; -1 if the reader finds damage.
int countRecords(std::vector<std::string> pieces)
{
    CGrowingFile file(std::move(pieces));
    Runner::CLineReader lines([&file](char* buffer, std::size_t size) { return file.Read(buffer, size); },
                              Runner::c_LargestRecord);
    try
    {
        int count = 0;
        for (std::string_view record; lines.Next(record);)
        {
            ++count;
        }
        return count;
    }
    catch (const Runner::SDamage&)
    {
        return -1;
    }
}

TEST(RunnerLineReader, IgnoresARecordThatIsAppendedAfterTheEndWasRead)
{
    EXPECT_EQ(countRecords({makeLine(1), "", makeLine(2)}), 1);
    EXPECT_EQ(countRecords({"", makeLine(1), makeLine(2)}), 0);
}

TEST(RunnerLineReader, IgnoresTheRestOfARecordThatIsWrittenAfterTheEndWasRead)
{
    const std::string line = makeLine(2);
    const std::string begin = line.substr(0, line.size() / 2);
    const std::string end = line.substr(begin.size());

    EXPECT_EQ(countRecords({makeLine(1) + begin, "", end + makeLine(3)}), 1);
    EXPECT_EQ(countRecords({makeLine(1) + begin, end, "", makeLine(3)}), 2);
}

TEST(RunnerLineReader, FindsDamageBeforeTheEnd)
{
    std::string damaged = makeLine(1);
    damaged[damaged.size() / 2] = '#';

    EXPECT_EQ(countRecords({damaged, makeLine(2)}), -1);
    EXPECT_EQ(countRecords({damaged + makeLine(2)}), -1);
}

TEST(RunnerLineReader, TreatsADamagedLastLineAsAnIncompleteWrite)
{
    std::string damaged = makeLine(2);
    damaged[damaged.size() / 2] = '#';

    EXPECT_EQ(countRecords({makeLine(1), damaged}), 1);
    EXPECT_EQ(countRecords({makeLine(1), damaged, "", makeLine(3)}), 1);
}

} // namespace

/// Journals that are cut or damaged.

#include <algorithm>

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "testing/lutestsuiterunner/journal/line.h"
#include "tests/lutestsuiterunner/journal/journalfile.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using Runner::Record;

/// Has the bytes of a small journal with all kinds of records, and its records as texts.
class RunnerJournalFaults : public testing::Test
{
protected:
    RunnerJournalFaults()
    {
        const std::vector<Record> records = {MakeStart(0),
                                             MakeEnd(0, ECaseRunResult::Ok),
                                             MakeStart(1),
                                             MakeEnd(1, ECaseRunResult::Error),
                                             Runner::SRunProblem{L"Größe"},
                                             Runner::SRunCanceled{L"Abbruch", 3},
                                             Runner::SRunFinished{L"2024-01-02 03:04:05", 4}};
        m_texts = WriteJournal(m_folder.GetPath(), records);
        m_bytes = LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"journal.ndjson"));
    }

    /// The records of a journal that consists of these bytes. Passes on the exceptions of the reader.
    std::vector<std::string> Read(const std::string& bytes, std::uint64_t* tailSize = nullptr) const
    {
        m_folder.WriteFile(L"journal.ndjson", bytes);
        return ReadJournal(m_folder.GetPath(), tailSize);
    }

    std::wstring ReadMessage(const std::string& bytes) const
    {
        try
        {
            Read(bytes);
            return {};
        }
        catch (const LbException& exception)
        {
            return exception.GetMessageText();
        }
    }

    std::size_t GetOffset(std::size_t line) const
    {
        std::size_t offset = 0;
        for (std::size_t number = 1; number < line; ++number)
        {
            offset = m_bytes.find('\n', offset) + 1;
        }
        return offset;
    }

    std::vector<std::string> GetFirst(std::size_t count) const
    {
        return {m_texts.begin(), m_texts.begin() + static_cast<std::ptrdiff_t>(count)};
    }

    const ScopedFolder m_folder;
    std::vector<std::string> m_texts;
    std::string m_bytes;
};

TEST_F(RunnerJournalFaults, ReadsTheCompleteRecordsOfEachPrefix)
{
    for (std::size_t size = 0; size <= m_bytes.size(); ++size)
    {
        const std::string prefix = m_bytes.substr(0, size);
        const auto lines = static_cast<std::size_t>(std::ranges::count(prefix, '\n'));
        std::uint64_t tailSize = 0;

        ASSERT_EQ(Read(prefix, &tailSize), GetFirst(lines)) << size;
        ASSERT_EQ(tailSize, size - (prefix.rfind('\n') + 1)) << size;
    }
}

TEST_F(RunnerJournalFaults, FindsEachFlippedBitBeforeTheLastLine)
{
    const std::size_t lastLine = GetOffset(m_texts.size());
    for (std::size_t position = 0; position < m_bytes.size(); ++position)
    {
        for (unsigned bit = 0; bit < 8; ++bit)
        {
            std::string damaged = m_bytes;
            damaged[position] = static_cast<char>(static_cast<unsigned char>(damaged[position]) ^ (1U << bit));
            std::uint64_t tailSize = 0;
            std::vector<std::string> texts;
            try
            {
                texts = Read(damaged, &tailSize);
            }
            catch (const LbException&)
            {
                continue;
            }
            ASSERT_GE(position, lastLine) << bit;
            ASSERT_EQ(texts, GetFirst(m_texts.size() - 1)) << position;
            ASSERT_EQ(tailSize, m_bytes.size() - lastLine) << position;
        }
    }
}

TEST_F(RunnerJournalFaults, NamesFileLineAndByteOfTheDamage)
{
    std::string damaged = m_bytes;
    damaged[GetOffset(4) + 60] = '#';
    const std::wstring message = ReadMessage(damaged);

    EXPECT_NE(message.find(L"journal.ndjson"), std::wstring::npos);
    EXPECT_NE(message.find(L"Zeile 4, Byte " + std::to_wstring(GetOffset(4)) + L":"), std::wstring::npos) << message;
}

TEST_F(RunnerJournalFaults, FindsMissingAndDuplicateLines)
{
    std::string shortened = m_bytes;
    shortened.erase(GetOffset(3), GetOffset(4) - GetOffset(3));
    EXPECT_NE(ReadMessage(shortened).find(L"Zeile 3,"), std::wstring::npos);

    const std::string last = m_bytes.substr(GetOffset(m_texts.size()));
    EXPECT_NE(ReadMessage(m_bytes + last), L"");
}

TEST_F(RunnerJournalFaults, IgnoresZerosAfterTheLastRecord)
{
    const std::string zeros(3 * Runner::c_LargestRecord, '\0');
    std::uint64_t tailSize = 0;

    EXPECT_EQ(Read(m_bytes + zeros, &tailSize), m_texts);
    EXPECT_EQ(tailSize, zeros.size());
    EXPECT_NE(ReadMessage(m_bytes + zeros + "\n" + m_bytes), L"");
}

TEST_F(RunnerJournalFaults, RefusesAnUnknownRecordWithACorrectChecksum)
{
    for (const char* const record :
         {R"({"t":"neu"})", R"({"case":1})", R"([])", R"({"t":"start","case":1})", "{",
          R"({"t":"end","case":1,"attempt":1,"result":"gut"})", R"({"t":"start","case":-1,"attempt":1})",
          R"({"t":"start","case":4294967296,"attempt":1})", R"({"t":"begin"})"})
    {
        std::string line;
        Runner::MakeLine(m_texts.size() + 1, record, line);
        EXPECT_NE(ReadMessage(m_bytes + line), L"") << record;
    }
}

TEST_F(RunnerJournalFaults, SkipsMembersOfLaterVersions)
{
    std::string line;
    Runner::MakeLine(m_texts.size() + 1,
                     R"({"t":"start","new":"x","case":1,"attempt":1,"more":{"file":"a","at":1},"process":4711,"at":1})",
                     line);
    std::vector<std::string> texts = m_texts;
    texts.push_back(ToText(MakeStart(1)));

    EXPECT_EQ(Read(m_bytes + line), texts);
}

TEST_F(RunnerJournalFaults, RefusesAJournalWithAnotherNumber)
{
    m_folder.WriteFile(L"journal-2.ndjson", m_bytes);
    Runner::CJournalReader reader(m_folder.GetPath(), 2);
    Record record;

    EXPECT_THROW(reader.Next(record), LbException);
}

} // namespace

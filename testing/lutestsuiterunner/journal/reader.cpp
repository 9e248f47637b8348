#include "testing/lutestsuiterunner/journal/reader.h"

#include <algorithm>
#include <utility>

#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/lustream.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/line.h"
#include "testing/lutestsuiterunner/journal/linereader.h"
#include "testing/lutestsuiterunner/journal/recordparser.h"
#include "testing/lutestsuiterunner/journal/storedtexts.h"

namespace Runner
{

class CJournalReader::CSource
{
public:
    CSource(const std::wstring& folder, std::uint32_t number)
        : m_number(number), m_path(folder + GetJournalName(number)), m_file(m_path), m_texts(folder, number),
          m_lines([this](char* buffer, std::size_t size) { return m_file.Read(buffer, size); }, c_LargestRecord)
    {
    }

    bool Next(Record& record)
    {
        try
        {
            return next(record);
        }
        catch (const SDamage& damage)
        {
            throw LbException(LbFormat(L"Das Journal %s ist beschädigt: Zeile %u, Byte %u: %s", m_path, damage.line,
                                       damage.offset, damage.what));
        }
    }

    const CLineReader& GetLines() const { return m_lines; }

    std::wstring DescribeBadLastLine() const
    {
        return m_lines.IsLastLineBad()
                   ? LbFormat(L"Das Journal %s endet mit einer beschädigten Zeile, die nicht zählt: Zeile %u, Byte %u",
                              m_path, m_lines.GetSequence() + 1, m_lines.GetEnd())
                   : std::wstring();
    }

private:
    /// Throws SDamage.
    bool next(Record& record)
    {
        std::string_view json;
        if (!m_lines.Next(json))
        {
            return false;
        }
        if (!m_parser.Parse(json, m_load, record))
        {
            throw SDamage{m_lines.GetSequence(), m_lines.GetOffset(), L"Der Eintrag ist nicht verständlich"};
        }
        requireBegin(record);
        return true;
    }

    /// Fails unless the first record, and no other, is the SJournalBegun of this journal.
    void requireBegin(const Record& record) const
    {
        const auto* const begun = std::get_if<SJournalBegun>(&record);
        if ((m_lines.GetSequence() == 1) != (begun != nullptr) || (begun != nullptr && begun->journal != m_number))
        {
            throw SDamage{m_lines.GetSequence(), m_lines.GetOffset(), L"Der Eintrag gehört nicht hierher"};
        }
    }

    std::uint32_t m_number;
    std::wstring m_path;
    LuStreamReadBinaryFile m_file;
    CStoredTexts m_texts;
    CLineReader m_lines;
    CRecordParser m_parser;
    const LoadText m_load = [this](const STextPlace& place) { return m_texts.Load(place); };
};

CJournalReader::CJournalReader(const std::wstring& folder, std::uint32_t number)
    : m_source(std::make_unique<CSource>(folder, number))
{
}

CJournalReader::~CJournalReader() = default;

bool CJournalReader::Next(Record& record)
{
    return m_source->Next(record);
}

std::uint64_t CJournalReader::GetSequence() const
{
    return m_source->GetLines().GetSequence();
}

std::uint64_t CJournalReader::GetTailSize() const
{
    return m_source->GetLines().GetTailSize();
}

std::wstring CJournalReader::DescribeBadLastLine() const
{
    return m_source->DescribeBadLastLine();
}

std::vector<std::uint32_t> FindJournals(const std::wstring& folder)
{
    std::vector<std::uint32_t> numbers;
    LbOs::VisitDirectory(folder, [&numbers](const LbOs::SDirectoryEntry& entry) {
        if (const auto number = GetJournalNumber(entry.name))
        {
            numbers.push_back(*number);
        }
    });
    return CompleteJournals(folder, std::move(numbers));
}

std::vector<std::uint32_t> CompleteJournals(const std::wstring& folder, std::vector<std::uint32_t> listed)
{
    std::ranges::sort(listed);
    std::vector<std::uint32_t> added;
    std::uint32_t number = 1;
    const auto isListed = [&] { return std::ranges::binary_search(listed, number); };
    for (; isListed() || LbOs::QueryEntry(folder + GetJournalName(number)) == LbOs::EEntry::File; ++number)
    {
        if (!isListed())
        {
            added.push_back(number);
        }
    }
    listed.insert(listed.end(), added.begin(), added.end());
    std::ranges::sort(listed);
    return listed;
}

} // namespace Runner

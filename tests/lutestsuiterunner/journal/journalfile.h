/// Journals of made-up runs, written and read in the tests of the journal.
#pragma once

#include <string>
#include <vector>

#include "base/lbfilesystem.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "testing/lutestsuiterunner/journal/writer.h"
#include "tests/lutestsuiterunner/samplerun.h"

/// Reads journal 1 in `folder` and returns its records as texts, see ToText. Passes on the exceptions of the reader.
inline std::vector<std::string> ReadJournal(const std::wstring& folder, std::uint64_t* tailSize = nullptr)
{
    Runner::CJournalReader reader(folder, 1);
    std::vector<std::string> texts;
    for (Runner::Record record; reader.Next(record);)
    {
        texts.push_back(ToText(record));
    }
    if (tailSize != nullptr)
    {
        *tailSize = reader.GetTailSize();
    }
    return texts;
}

/// Writes journal 1: the record that begins each journal, then `records`. Returns the texts of all records.
inline std::vector<std::string> WriteJournal(const std::wstring& folder, const std::vector<Runner::Record>& records)
{
    const Runner::SJournalBegun begun = {"plan", 6, 1, L"1.0", 1, L"Rechner", L"2024-01-02 03:04:05"};
    Runner::CJournalWriter writer(folder, begun);
    std::vector<std::string> texts = {ToText(begun)};
    for (const Runner::Record& record : records)
    {
        writer.Write(record);
        texts.push_back(ToText(record));
    }
    writer.Close();
    return texts;
}

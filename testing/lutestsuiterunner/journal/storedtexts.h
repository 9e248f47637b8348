/// The large texts of a journal.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/lustream.h"
#include "testing/lutestsuiterunner/journal/recordtext.h"

namespace Runner
{

/// Reads large texts in the order in which they were written, each once. One thread at a time.
class CStoredTexts
{
public:
    CStoredTexts(const std::wstring& folder, std::uint32_t journal);

    /// Returns a note if the text is missing at the end of the file: after a crash of the machine, the disk may contain
    /// a record but not yet its text. Throws LbException with a German message that names file and byte offset if the
    /// text differs from what was written.
    std::string Load(const STextPlace& place);

private:
    void skip(std::uint64_t size);
    std::string read(std::uint64_t size);
    bool isRestZero();

    std::string m_name;
    std::wstring m_path;
    std::unique_ptr<LuStreamReadBinaryFile> m_file; ///< opened with the first text
    std::uint64_t m_position = 0;
};

} // namespace Runner

/// Records from JSON.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "testing/lutestsuiterunner/journal/recordtext.h"
#include "testing/lutestsuiterunner/model/records.h"

namespace Runner
{

/// Loads the bytes of a text that EncodeRecord has stored.
using LoadText = std::function<std::string(const STextPlace& place)>;

/// Reuses its memory for all records. One thread at a time.
class CRecordParser
{
public:
    CRecordParser();
    ~CRecordParser();
    CRecordParser(const CRecordParser&) = delete;
    CRecordParser& operator=(const CRecordParser&) = delete;

    /// False if the text is not a record. Skips unknown members. Passes on exceptions of `load`.
    bool Parse(std::string_view json, const LoadText& load, Record& record);

private:
    class CHandler;

    std::unique_ptr<CHandler> m_handler;
};

} // namespace Runner

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

/// Gives the bytes of a text that EncodeRecord has stored.
using LoadText = std::function<std::string(const STextPlace& place)>;

/// Keeps its memory from record to record. One thread at a time.
class CRecordParser
{
public:
    CRecordParser();
    ~CRecordParser();
    CRecordParser(const CRecordParser&) = delete;
    CRecordParser& operator=(const CRecordParser&) = delete;

    /// False if the text is not a record. Members that are not known are skipped. Exceptions of `load` pass through.
    bool Parse(std::string_view json, const LoadText& load, Record& record);

private:
    class CHandler;

    std::unique_ptr<CHandler> m_handler;
};

} // namespace Runner

/// Records as JSON.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "testing/lutestsuiterunner/model/records.h"

namespace Runner
{

/// The place of a large text in a file beside the journal.
struct STextPlace
{
    std::string file; ///< relative to the run's folder, with "/"
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    std::string checksum; ///< of the bytes, in hexadecimal digits
};

/// Stores a large text beside the journal.
using StoreText = std::function<STextPlace(const std::string& utf8)>;

/// Appends the JSON of a record, at most c_LargestRecord bytes. Writes `elapsed` if the record's own `elapsed` is 0.
/// Passes on exceptions of `store`.
void EncodeRecord(const Record& record, std::uint64_t elapsed, const StoreText& store, std::string& json);

} // namespace Runner

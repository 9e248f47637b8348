/// Data sets of identical content.
#pragma once

#include <string>
#include <vector>

#include "base/lumurmurhash3.h"
#include "base/os/files.h"

namespace LuTestSuite
{

using Checksum = LuMurmurHash3::S128;

struct SDataSet
{
    std::wstring unitTestPath;
    std::wstring caseName;
    std::wstring path;
    std::wstring modificationTime; ///< a text that sorts chronologically
    LbOs::SFileStatus status;      ///< read before the checksum was computed
};

/// Two or more data sets of identical content; the one to keep comes first.
using DuplicateSet = std::vector<SDataSet>;

/// The sets of one unit test.
struct SDuplicates
{
    std::wstring unitTestPath;
    std::vector<DuplicateSet> sets;
};

} // namespace LuTestSuite

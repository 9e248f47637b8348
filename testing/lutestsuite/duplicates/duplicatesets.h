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
    std::wstring modificationTime; ///< the order of these texts is the order of times
    LbOs::SFileStatus status;      ///< from before the checksum was computed
};

/// Data sets of one content, at least two, the one to keep first.
using DuplicateSet = std::vector<SDataSet>;

/// Those of one unit test.
struct SDuplicates
{
    std::wstring unitTestPath;
    std::vector<DuplicateSet> sets;
};

} // namespace LuTestSuite

/// Groups files by the parts that they have in common.
#pragma once

#include <cstdint>
#include <vector>

#include "testing/lutestsuiterunner/review/parts.h"

namespace Runner
{

/// One decision about some parts of some files.
struct SPartGroup
{
    PartNames parts;
    std::vector<std::uint32_t> files; ///< indices, ordered; each of the files has all of the parts
};

/// Takes the parts of each file. Each part of each file is in exactly one group. Parts that are in the same files are
/// one group. But where that makes more groups, by more than a tenth, files with the same parts are one group; this is
/// decided for all files together that are connected by common parts. The tenth keeps some common parts apart from the
/// parts that each file has of its own.
std::vector<SPartGroup> GroupByParts(const std::vector<PartNames>& files);

} // namespace Runner

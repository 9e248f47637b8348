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

/// `files` contains the parts of each file. Each part of each file is in exactly one group.
///
/// Files that are connected by common parts are grouped in one of two ways: parts that are in the same files form a
/// group, or files with the same parts form a group. The second way is taken if it makes fewer groups by more than a
/// tenth. With a smaller difference the first way is better: it separates common parts from parts of single files.
std::vector<SPartGroup> GroupByParts(const std::vector<PartNames>& files);

} // namespace Runner

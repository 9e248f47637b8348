/// Finds the data sets of a unit test that have the same content.
#pragma once

#include <vector>

#include "testing/lutestsuite/duplicates/duplicatesets.h"
#include "testing/lutestsuite/duplicates/filechecksums.h"
#include "testing/lutestsuite/lutestsuiterun.h"

namespace LuTestSuite
{

/// Finds the duplicates among the data sets of a unit test's cases; several cases with the same file are one data set.
/// Sets are ordered by first appearance; inside a set the data set to keep comes first, the others follow in case
/// order. Does not read a file completely if its size or its first bytes distinguish it from all others. Prints a line
/// for each file that cannot be read, in case order.
SDuplicates ExamineDataSets(const SUnitTest& test, CFileChecksums& checksums);

} // namespace LuTestSuite

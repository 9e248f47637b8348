/// Which data sets of a unit test have the same content.
#pragma once

#include <vector>

#include "testing/lutestsuite/duplicates/duplicatesets.h"
#include "testing/lutestsuite/duplicates/filechecksums.h"
#include "testing/lutestsuite/lutestsuiterun.h"

namespace LuTestSuite
{

/// Finds the duplicates among the data sets of a unit test, which its cases name; two cases of one file are one data
/// set. Sets come in the order of first appearance, records in case order behind the one to keep. Files that must
/// differ from all others, by their sizes or their first bytes, are not read as a whole. Prints a line for each file
/// that cannot be read, in case order.
SDuplicates ExamineDataSets(const SUnitTest& test, CFileChecksums& checksums);

} // namespace LuTestSuite

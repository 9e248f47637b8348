/// A tree of tests with check boxes, as text.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuiterun.h"

/// Draws all cases of `found` as a tree of folders, classes and cases. Each folder and class shows how many cases are
/// below it. The box of a case is ticked if the case is in `selected`.
std::wstring DrawTree(const std::vector<LuTestSuite::SUnitTest>& found,
                      const std::vector<LuTestSuite::SUnitTest>& selected);

/// A tree of tests with check boxes, as text.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuiterun.h"

/// Draws all cases of `found` by folder, class and case. Each node shows how many cases are below it. The box of a case
/// is checked if the case is in `selected`.
std::wstring DrawTree(const std::vector<LuTestSuite::SUnitTest>& found,
                      const std::vector<LuTestSuite::SUnitTest>& selected);

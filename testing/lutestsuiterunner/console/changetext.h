/// Changes as German text for the console. Control characters of names and contents are replaced by pictures, so that
/// only colours steer a terminal.
#pragma once

#include <cstddef>
#include <string>

#include "testing/lutestsuiterunner/review/changes.h"

namespace Runner
{

struct SDiffStyle
{
    bool isColoured = false;
    bool isSideBySide = false;
    std::size_t width = 120; ///< of a line that shows both sides, in characters
};

/// One line about a change, and the first lines of its first difference. Paths are relative to `directory`.
std::wstring DescribeChange(const SChange& change, const std::wstring& directory, const SDiffStyle& style);

/// The differences of a change's first file. Throws LbException if it cannot be read.
std::wstring ShowDifference(const SChange& change, const std::wstring& directory, const SDiffStyle& style);

} // namespace Runner

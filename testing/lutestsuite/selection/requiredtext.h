/// A text that every match of an expression contains.
#pragma once

#include <string>

#include "testing/lutestsuite/selection/expressionsyntax.h"

namespace LuTestSuite
{

/// The longest known text that every match of the expression contains; empty if none is known.
std::wstring GetRequiredText(const SSyntaxNode& node);

} // namespace LuTestSuite

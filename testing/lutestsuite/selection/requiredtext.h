/// The text that each match of an expression contains.
#pragma once

#include <string>

#include "testing/lutestsuite/selection/expressionsyntax.h"

namespace LuTestSuite
{

/// A text that every match of the expression contains; empty if no such text exists or is known.
std::wstring GetRequiredText(const SSyntaxNode& node);

} // namespace LuTestSuite

/// The text that a name must contain to match an expression.
#pragma once

#include <string>

#include "testing/lutestsuite/selection/expressionsyntax.h"

namespace LuTestSuite
{

/// A text that is contained in every text in which the expression is found; empty if no such text is certain.
std::wstring GetRequiredText(const SSyntaxNode& node);

} // namespace LuTestSuite

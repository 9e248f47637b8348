/// The text that each match of an expression contains.
#pragma once

#include <string>

#include "testing/lutestsuite/selection/expressionsyntax.h"

namespace LuTestSuite
{

/// A text that is contained in every text in which the expression is found; empty if there is none or it is unknown.
std::wstring GetRequiredText(const SSyntaxNode& node);

} // namespace LuTestSuite

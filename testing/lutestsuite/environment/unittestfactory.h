/// Unit tests by class name.
#pragma once

#include <memory>
#include <string>

#include "base/luunittest.h"

namespace LuTestSuite
{

/// Creates an object of the class registered under `className`. Null if there is no such class, if it has no create
/// function, or if it is not a unit test. Exceptions of the class's constructor pass through.
std::unique_ptr<LuUnitTest> CreateUnitTest(const std::wstring& className);

/// Like CreateUnitTest, but returns null if the constructor throws.
std::unique_ptr<LuUnitTest> CreateUnitTestOrNull(const std::wstring& className) noexcept;

} // namespace LuTestSuite

/// Unit tests by class name.
#pragma once

#include <memory>
#include <string>

#include "base/luunittest.h"

namespace LuTestSuite
{

/// A new object of the class registered under `className`, owned by the caller; null when there is no such class, when
/// it cannot be created, or when it is not a unit test. Passes on what the class's constructor throws.
std::unique_ptr<LuUnitTest> CreateUnitTest(const std::wstring& className);

/// Like CreateUnitTest, but returns null if the constructor throws.
std::unique_ptr<LuUnitTest> CreateUnitTestOrNull(const std::wstring& className) noexcept;

} // namespace LuTestSuite

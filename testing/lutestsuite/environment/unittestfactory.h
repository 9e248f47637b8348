/// Unit tests by class name, sub-tests by theirs.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "base/luunittest.h"

namespace LuTestSuite
{

/// A new object of the class registered under `className`, owned by the caller; null when there is no such class, when
/// it cannot be created, or when it is no unit test. Passes on what the class's constructor throws.
std::unique_ptr<LuUnitTest> CreateUnitTest(const std::wstring& className);

/// The same, null also when the constructor throws.
std::unique_ptr<LuUnitTest> CreateUnitTestOrNull(const std::wstring& className) noexcept;

/// The first sub-test of exactly that name. Passes on what the unit test throws.
std::optional<std::uint32_t> FindSubtest(const LuUnitTest& unitTest, const std::wstring& name);

} // namespace LuTestSuite

/// A place that takes no bytes.
#pragma once

#include <string>

#include "tests/support/scopedfolder.h"

/// Path of a device that can be opened for writing and is always full; empty where the system has none, so that a test
/// of that failure is skipped there.
std::wstring GetFullDevice();

/// Makes a name in the folder lead to that device, and returns its path: a file that is there and cannot be written.
/// Empty where there is no such device.
std::wstring MakeFullFile(const ScopedFolder& folder, const std::wstring& name);

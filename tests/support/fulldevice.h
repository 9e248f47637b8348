/// A device on which every write fails.
#pragma once

#include <string>

#include "tests/support/scopedfolder.h"

/// Path of a device that can be opened for writing and is always full. Empty if the system has no such device; the test
/// must then be skipped.
std::wstring GetFullDevice();

/// Creates a link in the folder to that device and returns its path: a file that exists but cannot be written. Empty if
/// there is no such device.
std::wstring MakeFullFile(const ScopedFolder& folder, const std::wstring& name);

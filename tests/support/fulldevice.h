/// A place that takes no bytes.
#pragma once

#include <string>

/// Path of a device that can be opened for writing and is always full; empty where the system has none, so that a test
/// of that failure is skipped there.
std::wstring GetFullDevice();

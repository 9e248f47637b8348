/// Where the build puts its programs and modules.
#pragma once

#include <string>

/// The folder, with a separator at its end.
std::wstring GetBinaryFolder();

/// The folder of the build's programs and modules.
#pragma once

#include <string>

/// The folder, with trailing separator.
std::wstring GetBinaryFolder();

/// Where objects write themselves down while debugging.
#pragma once

#include <string>

#include "base/lbexport.h"

/// The process-wide default directory of debug serialisation. Any thread.
class LB_API LuDebugSerializationGeneric
{
public:
    /// Sets the directory (without separator at its end). It is not created by this: what writes there does that.
    static void SetDefaultOutputDirectory(const std::wstring& directory);

    /// The directory; empty when none was set.
    static std::wstring GetDefaultOutputDirectory();
};

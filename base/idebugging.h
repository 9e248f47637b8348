/// Optional interface of unit tests: options for debugging.
#pragma once

#include <cstdint>

#include "base/lbexport.h"

/// A unit-test class may derive from this interface in addition to LuUnitTest. The runner queries and sets the options
/// before each case, on the case's thread.
class LB_API IDebugging
{
public:
    enum EOption : std::uint32_t
    {
        eO_VerboseOutput = 0,
        eO_DebuggingSerialization = 1,
        eO_PredefinedBreakPoints = 2
    };

    virtual ~IDebugging();

    virtual bool IsOptionSupported(EOption option) const = 0;

    /// Called only for supported options.
    virtual void SetOption(EOption option, bool value) = 0;
};

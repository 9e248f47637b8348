/// The universal object base.
#pragma once

#include "base/lbexport.h"

class LbRTTI;

/// Base of every class that the registry can create. Derive virtually where a class may get it twice.
class LB_API IObject
{
public:
    virtual ~IObject();

    /// The run-time type record of the object's class; a class without a record of its own gives its base's.
    virtual const LbRTTI& GetRTTI() const;

    /// True when the object's class is `type` or derived from it.
    bool IsKindOf(const LbRTTI& type) const;

    static const LbRTTI RTTI;
};

/// The common base of all objects.
#pragma once

#include "base/lbexport.h"

class LbRTTI;

/// Base of every class whose objects the class registry (LbRTTI) can create. Derive virtually if a class may inherit
/// from IObject more than once.
class LB_API IObject
{
public:
    virtual ~IObject();

    /// The run-time type record of the object's class, or of the nearest base class that has a record.
    virtual const LbRTTI& GetRTTI() const;

    /// True if the object's class is `type` or derived from it.
    bool IsKindOf(const LbRTTI& type) const;

    static const LbRTTI RTTI;
};

#include "base/iobject.h"

#include "base/lbrtti.h"

const LbRTTI IObject::RTTI(L"IObject", nullptr, nullptr);

IObject::~IObject() = default;

const LbRTTI& IObject::GetRTTI() const
{
    return RTTI;
}

bool IObject::IsKindOf(const LbRTTI& type) const
{
    return GetRTTI().IsDerivedFrom(type);
}

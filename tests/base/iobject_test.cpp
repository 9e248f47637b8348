#include "base/iobject.h"

#include <gtest/gtest.h>

#include "base/lbrtti.h"

namespace
{

class CShape : public IObject
{
    LB_RTTI(CShape)
};

class CCircle : public CShape
{
    LB_RTTI(CCircle)
};

class CWithoutRecord : public CShape
{
};

} // namespace

LB_RTTI_CLASS(CShape, IObject)
LB_RTTI_CLASS(CCircle, CShape)

TEST(IObject, IsKindOfItsOwnClass)
{
    EXPECT_TRUE(CCircle().IsKindOf(CCircle::RTTI));
}

TEST(IObject, IsKindOfEachBase)
{
    const CCircle circle;
    EXPECT_TRUE(circle.IsKindOf(CShape::RTTI));
    EXPECT_TRUE(circle.IsKindOf(IObject::RTTI));
}

TEST(IObject, IsNotKindOfDerivedClass)
{
    EXPECT_FALSE(CShape().IsKindOf(CCircle::RTTI));
}

TEST(IObject, ReturnsTheRecordOfTheObjectsClassThroughABasePointer)
{
    const CCircle circle;
    const IObject& object = circle;
    EXPECT_EQ(&object.GetRTTI(), &CCircle::RTTI);
}

TEST(IObject, ReturnsTheBaseRecordForAClassWithoutRecord)
{
    EXPECT_EQ(&CWithoutRecord().GetRTTI(), &CShape::RTTI);
    EXPECT_EQ(&IObject().GetRTTI(), &IObject::RTTI);
}
